-- One row a text and language; filled from texts.tsv.
CREATE TABLE TRes (
  TResSLangKey TEXT(8) COLLATE JET,
  TResSTextKey TEXT(64) COLLATE JET,
  TResSText TEXT COLLATE JET
);
CREATE INDEX iResKey ON TRes (TResSTextKey, TResSLangKey);
