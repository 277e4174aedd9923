-- Turns a copy of the Chinook sample into the "Modified" side of the demo comparison.
-- Every kind of difference the comparison reports is here once; the comments say what the
-- report shows for it.

PRAGMA foreign_keys = OFF;
BEGIN;

-- A table only in the modified copy: "New Table" there, with its fields.
CREATE TABLE [Review]
(
    [ReviewId] INTEGER NOT NULL,
    [TrackId] INTEGER NOT NULL,
    [Stars] INTEGER,
    [Comment] NVARCHAR(200),
    CONSTRAINT [PK_Review] PRIMARY KEY ([ReviewId]),
    FOREIGN KEY ([TrackId]) REFERENCES [Track] ([TrackId])
);
INSERT INTO [Review] VALUES (1, 1, 5, 'Rock''n''roll at its best'), (2, 2, NULL, NULL);

-- A table only in the original: "New Table" on the original side.
DROP TABLE [PlaylistTrack];

-- A field only in the modified copy: "New Field" there.
ALTER TABLE [Artist] ADD COLUMN [Country] NVARCHAR(40);
UPDATE [Artist] SET [Country] = 'Australia' WHERE [ArtistId] = 1;

-- A field whose type differs: Invoice.Total is NUMERIC(10,2) in the original, REAL here.
CREATE TABLE [Invoice_changed]
(
    [InvoiceId] INTEGER  NOT NULL,
    [CustomerId] INTEGER  NOT NULL,
    [InvoiceDate] DATETIME  NOT NULL,
    [BillingAddress] NVARCHAR(70),
    [BillingCity] NVARCHAR(40),
    [BillingState] NVARCHAR(40),
    [BillingCountry] NVARCHAR(40),
    [BillingPostalCode] NVARCHAR(10),
    [Total] REAL  NOT NULL,
    CONSTRAINT [PK_Invoice] PRIMARY KEY  ([InvoiceId]),
    FOREIGN KEY ([CustomerId]) REFERENCES [Customer] ([CustomerId])
);
INSERT INTO [Invoice_changed] SELECT * FROM [Invoice];
DROP TABLE [Invoice];
ALTER TABLE [Invoice_changed] RENAME TO [Invoice];
CREATE INDEX [IFK_InvoiceCustomerId] ON [Invoice] ([CustomerId]);

-- Records only in the modified copy, one with an apostrophe, one with NULLs.
INSERT INTO [Artist] ([ArtistId], [Name], [Country]) VALUES (276, 'Sinéad O''Connor', 'Ireland');
INSERT INTO [Artist] ([ArtistId], [Name], [Country]) VALUES (277, NULL, NULL);

-- A record only in the original.
DELETE FROM [Genre] WHERE [GenreId] = 25;

-- Records edited: each shows as a record only in the original and one only in the copy.
UPDATE [Album] SET [Title] = 'Let There Be Rock (Live)' WHERE [AlbumId] = 4;
UPDATE [Customer] SET [Company] = NULL WHERE [CustomerId] = 1;
UPDATE [Employee] SET [Title] = 'IT Staff''s Manager' WHERE [EmployeeId] = 6;

COMMIT;
