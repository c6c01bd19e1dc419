-- Who changed what, and the seals that prove it: docs/seals.md. Beside the tables of log.sql in every log, and made
-- in place in a log that lacks them. Plain SQL throughout, so that other programs can work with the file as well.
CREATE TABLE THistory (
  tHistCulNrPk INTEGER PRIMARY KEY AUTOINCREMENT,
  tXrayCulIntIDPk INTEGER,
  tHistSField TEXT(32),
  tHistSOld TEXT,
  tHistSNew TEXT,
  tHistSKind TEXT(16),
  tHistNSeal INTEGER
);
CREATE INDEX iHistXray ON THistory (tXrayCulIntIDPk);

-- The marks come last: nobody who reads the other fields pays for their length.
CREATE TABLE TSeal (
  tSealCulNrPk INTEGER PRIMARY KEY AUTOINCREMENT,
  tSealSKind TEXT(16),
  tSealDTime DATETIME,
  tSealNOffset INTEGER,
  tSealSAccount TEXT,
  tSealSFullName TEXT,
  tSealSPlace TEXT,
  tSealSProgram TEXT,
  tSealSRun TEXT,
  tSealNFirstRow INTEGER,
  tSealNLastRow INTEGER,
  tSealNRows INTEGER,
  tSealNFirstHist INTEGER,
  tSealNLastHist INTEGER,
  tSealSExchange TEXT(64),
  tSealSRowDigest TEXT(64),
  tSealSHistDigest TEXT(64),
  tSealSDigest TEXT(64),
  tSealSMarks TEXT
);
CREATE INDEX iSealRow ON TSeal (tSealNLastRow);

-- The rules. What a log refuses, it refuses to every program.
CREATE TRIGGER rXrayDelete BEFORE DELETE ON TXray
BEGIN SELECT RAISE(ABORT, 'An exposure is never deleted.');
END;

-- Writing over a row is deleting it.
-- FAIL, not ABORT: nothing of the row is changed yet, and for ABORT the storage would copy every page that an
-- insertion or a change touches before it touches it.
CREATE TRIGGER rXrayReplace BEFORE INSERT ON TXray
WHEN EXISTS (SELECT 1 FROM TXray WHERE tXrayCulIntIDPk = NEW.tXrayCulIntIDPk)
BEGIN SELECT RAISE(FAIL, 'There is an exposure of that number.');
END;

CREATE TRIGGER rXrayIdentity BEFORE UPDATE ON TXray
WHEN OLD.tXrayCulIntIDPk IS NOT NEW.tXrayCulIntIDPk OR OLD.tXrayDBirthday COLLATE BINARY IS NOT NEW.tXrayDBirthday
  OR OLD.tXraySSex COLLATE BINARY IS NOT NEW.tXraySSex OR OLD.tXrayTs COLLATE BINARY IS NOT NEW.tXrayTs
BEGIN SELECT RAISE(FAIL, 'Number, birth date, sex and time of an exposure never change.');
END;

-- Each change needs its row in THistory first, the last one of that field and not yet sealed. A value that is locked
-- changes, and a flag opens, only for the imaging suite and for a repair; so does a name, whose letter case the suite
-- may deliver anew. (Without COLLATE BINARY other programs would miss the collation of the columns.)
CREATE TRIGGER rXrayChange BEFORE UPDATE ON TXray
WHEN EXISTS (
  SELECT 1 FROM (
    SELECT 'tXraySName' AS field, OLD.tXraySName COLLATE BINARY AS old, NEW.tXraySName COLLATE BINARY AS new, 0 AS isFree
    UNION ALL SELECT 'tXraySFirstname', OLD.tXraySFirstname COLLATE BINARY, NEW.tXraySFirstname COLLATE BINARY, 0
    UNION ALL SELECT 'tXraySPreg', OLD.tXraySPreg COLLATE BINARY, NEW.tXraySPreg COLLATE BINARY, OLD.tXrayBEdPreg = 1
    UNION ALL SELECT 'tXrayBEdPreg', OLD.tXrayBEdPreg COLLATE BINARY, NEW.tXrayBEdPreg COLLATE BINARY, NEW.tXrayBEdPreg = 0
    UNION ALL SELECT 'tXraySDr', OLD.tXraySDr COLLATE BINARY, NEW.tXraySDr COLLATE BINARY, OLD.tXrayBEdDr = 1
    UNION ALL SELECT 'tXrayBEdDr', OLD.tXrayBEdDr COLLATE BINARY, NEW.tXrayBEdDr COLLATE BINARY, NEW.tXrayBEdDr = 0
    UNION ALL SELECT 'tXraySType', OLD.tXraySType COLLATE BINARY, NEW.tXraySType COLLATE BINARY, OLD.tXrayBEdType = 1
    UNION ALL SELECT 'tXrayBEdType', OLD.tXrayBEdType COLLATE BINARY, NEW.tXrayBEdType COLLATE BINARY, NEW.tXrayBEdType = 0
    UNION ALL SELECT 'tXraySDiagRetry', OLD.tXraySDiagRetry COLLATE BINARY, NEW.tXraySDiagRetry COLLATE BINARY, OLD.tXrayBEdDiagRetry = 1
    UNION ALL SELECT 'tXrayBEdDiagRetry', OLD.tXrayBEdDiagRetry COLLATE BINARY, NEW.tXrayBEdDiagRetry COLLATE BINARY, NEW.tXrayBEdDiagRetry = 0
    UNION ALL SELECT 'tXraySRegio', OLD.tXraySRegio COLLATE BINARY, NEW.tXraySRegio COLLATE BINARY, OLD.tXrayBEdRegio = 1
    UNION ALL SELECT 'tXrayBEdRegio', OLD.tXrayBEdRegio COLLATE BINARY, NEW.tXrayBEdRegio COLLATE BINARY, NEW.tXrayBEdRegio = 0
    UNION ALL SELECT 'tXraySRadDur', OLD.tXraySRadDur COLLATE BINARY, NEW.tXraySRadDur COLLATE BINARY, OLD.tXrayBEdRadDur = 1
    UNION ALL SELECT 'tXrayBEdRadDur', OLD.tXrayBEdRadDur COLLATE BINARY, NEW.tXrayBEdRadDur COLLATE BINARY, NEW.tXrayBEdRadDur = 0
    UNION ALL SELECT 'tXraySVolt', OLD.tXraySVolt COLLATE BINARY, NEW.tXraySVolt COLLATE BINARY, OLD.tXrayBEdVolt = 1
    UNION ALL SELECT 'tXrayBEdVolt', OLD.tXrayBEdVolt COLLATE BINARY, NEW.tXrayBEdVolt COLLATE BINARY, NEW.tXrayBEdVolt = 0
    UNION ALL SELECT 'tXraySCur', OLD.tXraySCur COLLATE BINARY, NEW.tXraySCur COLLATE BINARY, OLD.tXrayBEdCur = 1
    UNION ALL SELECT 'tXrayBEdCur', OLD.tXrayBEdCur COLLATE BINARY, NEW.tXrayBEdCur COLLATE BINARY, NEW.tXrayBEdCur = 0
    UNION ALL SELECT 'tXraySDose', OLD.tXraySDose COLLATE BINARY, NEW.tXraySDose COLLATE BINARY, OLD.tXrayBEdDose = 1
    UNION ALL SELECT 'tXrayBEdDose', OLD.tXrayBEdDose COLLATE BINARY, NEW.tXrayBEdDose COLLATE BINARY, NEW.tXrayBEdDose = 0
    UNION ALL SELECT 'tXraySComment', OLD.tXraySComment COLLATE BINARY, NEW.tXraySComment COLLATE BINARY, 1) AS change
  WHERE old COLLATE BINARY IS NOT new COLLATE BINARY AND NOT EXISTS (
    SELECT 1 FROM THistory WHERE tHistCulNrPk = (
        SELECT max(tHistCulNrPk) FROM THistory
        WHERE tXrayCulIntIDPk = OLD.tXrayCulIntIDPk AND tHistSField = change.field)
      AND tHistNSeal > (SELECT ifnull(max(tSealCulNrPk), 0) FROM TSeal)
      AND tHistSOld COLLATE BINARY IS CAST(change.old AS TEXT) COLLATE BINARY
      AND tHistSNew COLLATE BINARY IS CAST(change.new AS TEXT) COLLATE BINARY
      AND (change.isFree OR tHistSKind IN ('suite', 'repair'))))
BEGIN SELECT RAISE(FAIL, 'The value is locked, or the change does not stand in THistory.');
END;

CREATE TRIGGER rHistoryChange BEFORE UPDATE ON THistory
BEGIN SELECT RAISE(ABORT, 'The history is never changed.');
END;

CREATE TRIGGER rHistoryDelete BEFORE DELETE ON THistory
BEGIN SELECT RAISE(ABORT, 'The history is never deleted.');
END;

CREATE TRIGGER rHistoryReplace BEFORE INSERT ON THistory
WHEN EXISTS (SELECT 1 FROM THistory WHERE tHistCulNrPk = NEW.tHistCulNrPk)
  OR NEW.tHistNSeal IS NOT (SELECT ifnull(max(tSealCulNrPk), 0) + 1 FROM TSeal)
BEGIN SELECT RAISE(FAIL, 'A new row of the history belongs to the next seal.');
END;

CREATE TRIGGER rSealChange BEFORE UPDATE ON TSeal
BEGIN SELECT RAISE(ABORT, 'A seal is never changed.');
END;

CREATE TRIGGER rSealDelete BEFORE DELETE ON TSeal
BEGIN SELECT RAISE(ABORT, 'A seal is never deleted.');
END;

CREATE TRIGGER rSealReplace BEFORE INSERT ON TSeal
WHEN EXISTS (SELECT 1 FROM TSeal WHERE tSealCulNrPk = NEW.tSealCulNrPk)
BEGIN SELECT RAISE(FAIL, 'There is a seal of that number.');
END;
