-- The changes of changes.sql for the Chinook sample loaded into MySQL or MariaDB from
-- Chinook_MySql.sql (PascalCase names, as in the SQLite sample): run it into that database to
-- make the "Modified" side. Every kind of difference the comparison reports is here once; the
-- comments say what the report shows for it.

SET NAMES utf8mb4;
SET FOREIGN_KEY_CHECKS = 0;
START TRANSACTION;

-- A table only in the modified copy: "New Table" there, with its fields.
CREATE TABLE `Review`
(
    `ReviewId` INT NOT NULL,
    `TrackId` INT NOT NULL,
    `Stars` INT,
    `Comment` NVARCHAR(200),
    CONSTRAINT `PK_Review` PRIMARY KEY (`ReviewId`),
    CONSTRAINT `FK_ReviewTrackId` FOREIGN KEY (`TrackId`) REFERENCES `Track` (`TrackId`)
);
INSERT INTO `Review` VALUES (1, 1, 5, 'Rock''n''roll at its best'), (2, 2, NULL, NULL);

-- A table only in the original: "New Table" on the original side.
DROP TABLE `PlaylistTrack`;

-- A field only in the modified copy: "New Field" there.
ALTER TABLE `Artist` ADD COLUMN `Country` NVARCHAR(40);
UPDATE `Artist` SET `Country` = 'Australia' WHERE `ArtistId` = 1;

-- A field whose type differs: Invoice.Total is NUMERIC(10,2) in the original, a floating-point
-- number here.
ALTER TABLE `Invoice` MODIFY `Total` DOUBLE NOT NULL;

-- Records only in the modified copy, one with an apostrophe, one with NULLs.
INSERT INTO `Artist` (`ArtistId`, `Name`, `Country`) VALUES (276, 'Sinéad O''Connor', 'Ireland');
INSERT INTO `Artist` (`ArtistId`, `Name`, `Country`) VALUES (277, NULL, NULL);

-- A record only in the original.
DELETE FROM `Genre` WHERE `GenreId` = 25;

-- Records edited: each shows as a record only in the original and one only in the copy.
UPDATE `Album` SET `Title` = 'Let There Be Rock (Live)' WHERE `AlbumId` = 4;
UPDATE `Customer` SET `Company` = NULL WHERE `CustomerId` = 1;
UPDATE `Employee` SET `Title` = 'IT Staff''s Manager' WHERE `EmployeeId` = 6;

COMMIT;
SET FOREIGN_KEY_CHECKS = 1;
