-- The changes of changes.sql for the Chinook sample loaded into PostgreSQL from
-- Chinook_PostgreSql.sql (snake_case names): run it into that database to make the "Modified"
-- side. Every kind of difference the comparison reports is here once; the comments say what the
-- report shows for it.

SET client_encoding = 'UTF8';
BEGIN;

-- A table only in the modified copy: "New Table" there, with its fields.
CREATE TABLE review
(
    review_id INT NOT NULL,
    track_id INT NOT NULL,
    stars INT,
    comment VARCHAR(200),
    CONSTRAINT review_pkey PRIMARY KEY (review_id),
    CONSTRAINT review_track_id_fkey FOREIGN KEY (track_id) REFERENCES track (track_id)
);
INSERT INTO review VALUES (1, 1, 5, 'Rock''n''roll at its best'), (2, 2, NULL, NULL);

-- A table only in the original: "New Table" on the original side.
DROP TABLE playlist_track;

-- A field only in the modified copy: "New Field" there.
ALTER TABLE artist ADD COLUMN country VARCHAR(40);
UPDATE artist SET country = 'Australia' WHERE artist_id = 1;

-- A field whose type differs: invoice.total is NUMERIC(10,2) in the original, a floating-point
-- number here.
ALTER TABLE invoice ALTER COLUMN total TYPE DOUBLE PRECISION;

-- Records only in the modified copy, one with an apostrophe, one with NULLs.
INSERT INTO artist (artist_id, name, country) VALUES (276, 'Sinéad O''Connor', 'Ireland');
INSERT INTO artist (artist_id, name, country) VALUES (277, NULL, NULL);

-- A record only in the original. Tracks of that genre keep pointing at it, as they do in the
-- SQLite copy (made with foreign keys off): the key is put back without checking old rows.
ALTER TABLE track DROP CONSTRAINT track_genre_id_fkey;
DELETE FROM genre WHERE genre_id = 25;
ALTER TABLE track ADD CONSTRAINT track_genre_id_fkey
    FOREIGN KEY (genre_id) REFERENCES genre (genre_id) NOT VALID;

-- Records edited: each shows as a record only in the original and one only in the copy.
UPDATE album SET title = 'Let There Be Rock (Live)' WHERE album_id = 4;
UPDATE customer SET company = NULL WHERE customer_id = 1;
UPDATE employee SET title = 'IT Staff''s Manager' WHERE employee_id = 6;

COMMIT;
