-- An empty log, version 1.1. The order of the fields is the order in which they are exported.
CREATE TABLE TConfig (
  tCfgSKey TEXT(32) COLLATE JET,
  tCfgSSet TEXT(255) COLLATE JET
);
INSERT INTO TConfig VALUES ('DBVersion', '1.1'), ('ReadOnly', '0');

CREATE TABLE TXray (
  tXrayCulIntIDPk INTEGER PRIMARY KEY AUTOINCREMENT,
  tXraySName TEXT(32) COLLATE JET,
  tXraySFirstname TEXT(32) COLLATE JET,
  tXrayDBirthday DATETIME,
  tXraySSex TEXT(1) COLLATE JET,
  tXraySPreg TEXT(1) COLLATE JET,
  tXrayBEdPreg YESNO DEFAULT 0,
  tXrayTs DATETIME,
  tXraySDr TEXT(12) COLLATE JET,
  tXrayBEdDr YESNO DEFAULT 0,
  tXraySType TEXT(4) COLLATE JET,
  tXrayBEdType YESNO DEFAULT 0,
  tXraySDiagRetry TEXT(16) COLLATE JET,
  tXrayBEdDiagRetry YESNO DEFAULT 0,
  tXraySRegio TEXT(16) COLLATE JET,
  tXrayBEdRegio YESNO DEFAULT 0,
  tXraySRadDur TEXT(8) COLLATE JET,
  tXrayBEdRadDur YESNO DEFAULT 0,
  tXraySVolt TEXT(5) COLLATE JET,
  tXrayBEdVolt YESNO DEFAULT 0,
  tXraySCur TEXT(5) COLLATE JET,
  tXrayBEdCur YESNO DEFAULT 0,
  tXraySDose TEXT(32) COLLATE JET,
  tXrayBEdDose YESNO DEFAULT 0,
  tXraySComment TEXT(255) COLLATE JET
);

-- Exposures arrive in the order of time, so an index that begins with it grows at its end, and it serves
-- periods as well. Seek takes the values in the order behind "seek:".
CREATE INDEX iXRayIdent ON TXray (
  tXrayTs, tXraySName, tXraySFirstname, tXrayDBirthday
  /* seek: tXraySName, tXraySFirstname, tXrayDBirthday, tXrayTs */
);
-- Narrow, for showing the whole log in the order of time at once.
CREATE INDEX iXRayTs ON TXray (tXrayTs);
