#include "bench/Claims.h"

namespace varnlog::bench {

namespace {

// An update may take 1.8 times as long as the bare insertion, and sealing what it adds 1.15 times as long as
// not sealing it.
constexpr double kSealedUpdate = 1.8 * 1.15;

constexpr Ratio kClaims[] = {
    {"read and parse 100,000 records / raw insert", "Parse/100000", "RawFresh/100000", 0.22},
    {"read and parse 1,000,000 records / raw insert", "Parse/1000000", "RawFresh/1000000", 0.22},
    {"update with 100,000 fresh records / raw insert", "Fresh/100000", "RawFresh/100000", kSealedUpdate},
    {"update with 1,000,000 fresh records / raw insert", "Fresh/1000000", "RawFresh/1000000", kSealedUpdate},
    {"10,000 recent records into 100,000 / raw insert", "RecentIntoFull/100000", "RawRecent/10000", 2.53},
    {"10,000 recent records into 1,000,000 / raw insert", "RecentIntoFull/1000000", "RawRecent/10000", 2.53},
    {"10,000 recent records: into 1,000,000 / into 100,000", "RecentIntoFull/1000000",
     "RecentIntoFull/100000", 1.2},
    {"100,000 records once more / raw insert", "SameAgain/100000", "RawFresh/100000", 0.8},
    {"1,000,000 records once more / raw insert", "SameAgain/1000000", "RawFresh/1000000", 0.8},
    {"first 60 of 1,000,000 rows / of 10,000 rows", "OpenAndReadPage/1000000", "OpenAndReadPage/10000", 1.5},
    {"all ids of 1,000,000 rows / bare statement", "AllIds/1000000", "BareIds/1000000", 1.3},
    {"jump and read 60 rows / bare statements", "JumpAndReadPage/1000000", "BarePage/1000000", 1.5},
    {"100,000 texts looked up / bare prepared query", "GetText", "BareText", 1.5},
    {"sort by patient / bare scan of the names", "SortByPatient", "BareNameScan", 4.0},
    {"sort by patient / ORDER BY with the collation", "SortByPatient", "BareSort", 0.45},
    {"the reverse order / the sort by patient", "SortReversed", "SortByPatient", 0.1},
    {"sort by a column with few values / bare scan", "SortByType", "BareTypeScan", 1.8},
    {"patient search, first answer / bare scan", "PatientSearchFirst", "BareNameScan", 1.3},
    {"patient search, further answers / bare scan", "PatientSearchAgain/0", "BareNameScan", 0.05},
    {"patient search with wildcards, further / bare scan", "PatientSearchAgain/1", "BareNameScan", 0.05},
    {"patient search, all 20,000 patients again / bare scan", "PatientSearchAgain/2", "BareNameScan", 0.15},
    {"period and type / bare statement", "PeriodAndType", "BarePeriodAndType", 1.2},
    {"start to painted grid: 1,000,000 rows / 10,000 rows", "StartToPaintedGrid/1000000",
     "StartToPaintedGrid/10000", 2.5},
    {"jump to any row, painted / over rows in memory", "JumpPainted/1000000", "JumpMadeUp/1000000", 1.25},
    {"jump to any row: 1,000,000 rows / 10,000 rows", "JumpPainted/1000000", "JumpPainted/10000", 1.25},
    {"page down, painted / over rows in memory", "PageDownPainted/1000000", "PageDownMadeUp/1000000", 1.25},
    {"page down: 1,000,000 rows / 10,000 rows", "PageDownPainted/1000000", "PageDownPainted/10000", 1.25},
    {"MB that the view of 1,000,000 rows adds", "ViewMegabytes", "", 40},
    {"seconds: screen reader asks for the children", "ReadAloud/100000", "", 0.3},
    {"MB that a screen reader's questions add", "ReadAloudMegabytes", "", 20},
    {"read 20,000 old exposures / the same from SQLite", "ReadOld", "ReadNew", 1.5},
    {"convert 20,000 old exposures / bare copy of the rows", "Convert", "BareCopy", 2.2},
    {"convert 20,000 old exposures / reading them", "Convert", "ReadOld", 12.0},
    {"intake of 1,000,000 records with seals / without", "IntakeSealed/1000000", "IntakeUnsealed/1000000",
     1.15},
    {"percent that the seal of 1,000,000 rows adds", "SealPercent/1000000", "", 2},
    {"verify 1,000,000 exposures, 50,000 entries / bare rows", "VerifyAll", "BareRows", 4.0},
    {"seconds: history of a row of 1,000,000", "HistoryOfRow", "", 0.005},
    {"one entry with its seal / without", "EntrySealed", "EntryUnsealed", 1.5},
    {"report of 10,000 rows / drawing its texts", "ReportPdf/10000", "BarePdf/10000", 1.5},
    {"memory: report of 200,000 rows / of 10,000 rows", "ReportMegabytes/200000", "ReportMegabytes/10000",
     1.2},
    {"find in the list: seconds to the first hits of 1,000,000", "FindFirst", "", 0.05},
    {"find in the list: 1,000,000 rows / bare scan", "FindAll", "BareFind", 1.3},
    {"find in the list: typing on / bare scan", "FindAgain", "BareFind", 0.1},
    {"statistics of 1,000,000 rows / bare scan", "StatisticsAll", "BareStatistics", 2.0},
    {"seconds: statistics of 1,000,000 rows", "StatisticsAll", "", 1.0},
    {"workbook of 100,000 rows / the library with its cells", "ExportXlsx/100000", "BareXlsx/100000", 1.5},
    {"CSV of 100,000 rows / the storage's shell", "ExportCsv/100000", "ShellCsv/100000", 2.0},
    {"memory: workbook of 100,000 rows / of 10,000", "ExportMegabytes/100000", "ExportMegabytes/10000", 1.2},
    {"server: 1,000,000 fresh records / COPY of their rows", "ServerFresh/1000000", "ServerCopyFresh/1000000",
     1.5},
    {"server: 10,000 recent records into 1,000,000 / COPY", "ServerRecent/1000000",
     "ServerCopyRecent/1000000", 2.5},
    {"server: 1,000,000 records once more / COPY", "ServerAgain/1000000", "ServerCopyFresh/1000000", 1.0},
    {"server: first 60 of 1,000,000 rows / bare SELECT of 60", "ServerFirstPage/1000000",
     "ServerBarePage/1000000", 3.0},
    {"server: first 60 rows, of 10,000,000 / of 1,000,000", "ServerFirstPage/10000000",
     "ServerFirstPage/1000000", 1.3},
    {"server: jump and read 60 rows / bare SELECT of them", "ServerJump/1000000", "ServerBarePage/1000000",
     1.5},
    {"server: jump in 10,000,000 rows / bare SELECT", "ServerJump/10000000", "ServerBarePage/10000000", 1.5},
    {"server: sort by patient / ORDER BY and the ids", "ServerSort/1000000", "ServerBareSort/1000000", 1.2},
    {"server: patient search / SELECT DISTINCT of names", "ServerPatientSearch/1000000",
     "ServerBareNames/1000000", 1.3},
    {"server: a change of eight programs / of eight connections", "ServerEntries", "ServerBareEntries", 2.0},
};

}  // namespace

std::span<const Ratio> Claims() {
  return kClaims;
}

}  // namespace varnlog::bench
