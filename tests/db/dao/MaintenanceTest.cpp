#include <algorithm>
#include <random>
#include <set>

#include "tests/db/dao/EngineFixture.h"
#include "tests/support/Table.h"

namespace varnlog::dao {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kPage = 16384;
constexpr int kRows = 3000;

class MaintenanceTest : public EngineTest {
 protected:
  MaintenanceTest() : path_(MakeLog()) {
    const auto log = Open(path_);
    FillLog(*workspace_, *log, kRows);
    log->Close();
  }

  [[nodiscard]] fs::path File() const { return folder_ / "log.mdb"; }
  [[nodiscard]] std::string Content() const { return ReadFile(File()); }
  [[nodiscard]] std::set<std::int64_t> Ids(const std::string& path) {
    std::set<std::int64_t> ids;
    const auto rows =
        Open(path, true)->OpenRecordset("SELECT tXrayCulIntIDPk FROM TXray", RecordsetType::kSnapshot);
    for (; !rows->IsEOF(); rows->MoveNext()) ids.insert(rows->Fields(0).Number());
    return ids;
  }
  // Pages are told apart by what is written on them; a row goes on with its time stamp, an index does not.
  [[nodiscard]] std::uint64_t PageOfRow(const std::string& name) const {
    return PageWith(name + "Anna1970-01-01 00:00:002024");
  }
  [[nodiscard]] std::uint64_t PageWith(const std::string& text) const {
    const std::string content = Content();
    const std::size_t at = content.find(text);
    EXPECT_NE(at, std::string::npos);
    return at / kPage;
  }

  std::string path_;
};

TEST_F(MaintenanceTest, CompactsIntoANewFile) {
  Open(path_)->Execute("DELETE FROM TXray WHERE rowid > 100");
  const std::string before = Content();
  std::vector<double> parts;
  engine_.CompactDatabase(path_, Path("small.mdb"), kNoOption, [&](double part) {
    parts.push_back(part);
    return true;
  });
  EXPECT_TRUE(Content() == before);
  EXPECT_LT(fs::file_size(folder_ / "small.mdb"), before.size() / 2);
  EXPECT_EQ(Ids(Path("small.mdb")), Ids(path_));
  ASSERT_FALSE(parts.empty());
  EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end()));
  EXPECT_EQ(parts.back(), 1.0);
  const auto table = Open(Path("small.mdb"))->OpenRecordset("TXray");
  EXPECT_TRUE(FindExposure(*table, {"P9", "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(9)}));
  AddExposure(*table, {"New", "Row", Minute(0), Minute(9999)});
  EXPECT_TRUE(FindExposure(*table, {"New", "Row", Minute(0), Minute(9999)}));
  EXPECT_EQ(table->Fields(0).Number(), kRows + 1) << "numbers go on where they were";
}

TEST_F(MaintenanceTest, CompactingNeverOverwritesAndLeavesNothingHalf) {
  folder_.Holding("there.mdb", "something else");
  folder_.Holding("letter.txt", "no database");
  for (const auto& [source, target, number] : Table<std::string, std::string, ErrorNumber>{
           {path_, Path("there.mdb"), kFileExists},
           {path_, path_, kFileExists},
           {path_, Path("no/where.mdb"), kInvalidPath},
           {Path("missing.mdb"), Path("new.mdb"), kFileNotFound},
           {Path("letter.txt"), Path("new.mdb"), kUnrecognisedFormat}})
    EXPECT_EQ(ErrorOf([&] { engine_.CompactDatabase(source, target); }), number)
        << source << " to " << target;
  EXPECT_EQ(ErrorOf([&] {
              engine_.CompactDatabase(path_, Path("new.mdb"), kNoOption, [](double) { return false; });
            }),
            kCancelled);
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"letter.txt", "log.mdb", "system.mdw", "there.mdb"}));
  EXPECT_EQ(ReadFile(folder_ / "there.mdb"), "something else");
}

TEST_F(MaintenanceTest, CompactsInPlaceWhileNobodyElseWrites) {
  Open(path_)->Execute("DELETE FROM TXray WHERE rowid > 1000");
  const auto ids = Ids(path_);
  const auto before = fs::file_size(File());
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(path_, false, false);
  other.workspace->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { engine_.CompactInPlace(path_, Path("log.TMP")); }), kFileInUse);
  other.workspace->Rollback();
  EXPECT_EQ(ErrorOf([&] {
              engine_.CompactInPlace(path_, Path("log.TMP"), kNoOption,
                                     [](double part) { return part < 0.8; });
            }),
            kCancelled);
  EXPECT_EQ(Ids(path_), ids);
  const auto rows = otherLog->OpenRecordset("SELECT * FROM TXray ORDER BY tXrayTs");
  engine_.CompactInPlace(path_, Path("log.TMP"));
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"log.mdb", "system.mdw"}));
  EXPECT_LT(fs::file_size(File()), before / 2);
  EXPECT_EQ(Ids(path_), ids);
  // It is still the file that the other station has open.
  EXPECT_FALSE(otherLog->WasReplaced());
  rows->MoveLast();
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "P999");
  AddExposure(*otherLog->OpenRecordset("TXray"), {"New", "Row", Minute(0), Minute(0)});
  EXPECT_TRUE(Ids(path_).contains(kRows + 1));
}

// Logs whose names agree up to the first point have one temporary file.
TEST_F(MaintenanceTest, TheTemporaryFileOfAnotherIsLeftAlone) {
  bool wasInUse = false;
  const std::string second = MakeLog("log.2024.mdb");
  engine_.CompactInPlace(path_, Path("log.TMP"), kNoOption, [&](double part) {
    if (part <= 0.7 || std::exchange(wasInUse, true)) return true;
    EXPECT_EQ(ErrorOf([&] { engine_.CompactInPlace(second, Path("log.TMP")); }), kFileInUse);
    return true;
  });
  EXPECT_TRUE(wasInUse);
  const std::string log = MakeLog("log.TMP");
  for (const fs::path& same : {folder_ / "log.TMP", folder_ / "log.2024.mdb"})
    EXPECT_EQ(ErrorOf([&] { engine_.CompactInPlace(same.string(), log); }), kFileExists);
  EXPECT_EQ(Ids(path_).size(), std::size_t{kRows});
}

// The journal of a log that was moved away would be applied to the one that gets its name.
TEST_F(MaintenanceTest, AJournalOfTheSameNameIsPutAside) {
  folder_.Holding("new.mdb-journal", "of an earlier log");
  engine_.CompactDatabase(path_, Path("new.mdb"));
  folder_.Holding("made.mdb-journal", "of another");
  MakeLog("made.mdb");
  EXPECT_EQ(ReadFile(folder_ / "new.mdb-journal.aside"), "of an earlier log");
  EXPECT_EQ(ReadFile(folder_ / "made.mdb-journal.aside"), "of another");
  folder_.Holding("made.mdb-journal", "once more");
  DBEngine::PutJournalAside(Path("made.mdb"));
  EXPECT_EQ(ReadFile(folder_ / "made.mdb-journal.aside2"), "once more");
  EXPECT_EQ(Ids(Path("new.mdb")), Ids(path_));
}

TEST_F(MaintenanceTest, RepairLeavesASoundFileAlone) {
  const std::string before = Content();
  EXPECT_FALSE(engine_.RepairDatabase(path_).WasDamaged());
  EXPECT_TRUE(Content() == before);
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"log.mdb", "system.mdw"}));
}

// A page of rows is lost: all other rows, their numbers and their order stay.
TEST_F(MaintenanceTest, RepairKeepsEveryRowThatCanBeRead) {
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(path_, false, false);
  otherLog->Execute(
      "CREATE TRIGGER keep BEFORE DELETE ON TXray BEGIN SELECT raise(ABORT, 'never'); END;"
      "DELETE FROM TXray WHERE rowid = 7");
  const auto before = Ids(path_);
  Damage(path_, PageOfRow("P1500") * kPage, kPage);
  const std::string damaged = Content();
  EXPECT_FALSE(Open(path_)->Check().empty());
  const RepairReport report = engine_.RepairDatabase(path_);
  const auto after = Ids(path_);
  EXPECT_FALSE(otherLog->WasReplaced());
  EXPECT_EQ(report.damagedFile, path_ + ".damaged");
  ASSERT_EQ(report.tables.size(), 2U);
  EXPECT_EQ(report.tables[1].name, "TXray");
  EXPECT_EQ(report.tables[1].read, static_cast<std::int64_t>(after.size()));
  ASSERT_EQ(report.tables[1].missing.size(), 2U);
  EXPECT_EQ(report.tables[1].missing[0], (IdRange{7, 7}));
  const IdRange missing = report.tables[1].missing[1];
  EXPECT_EQ(static_cast<std::size_t>(CountOf({missing})), before.size() - after.size());
  EXPECT_TRUE(missing.first <= 1501 && missing.last >= 1501 && !after.contains(missing.first));
  EXPECT_GT(after.size(), before.size() - 400) << "no more than the rows of one page";
  EXPECT_LT(after.size(), before.size());
  EXPECT_TRUE(std::includes(before.begin(), before.end(), after.begin(), after.end()));
  EXPECT_TRUE(after.contains(1) && after.contains(kRows));
  EXPECT_TRUE(Open(path_)->Check().empty());
  EXPECT_TRUE(ReadFile(folder_ / "log.mdb.damaged") == damaged) << "nothing is thrown away";
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"log.mdb", "log.mdb.damaged", "system.mdw"}));
  const auto log = Open(path_);
  const auto table = log->OpenRecordset("TXray");
  EXPECT_TRUE(FindExposure(*table, {"P9", "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(9)}));
  AddExposure(*table, {"New", "Row", Minute(0), Minute(9999)});
  ASSERT_TRUE(FindExposure(*table, {"New", "Row", Minute(0), Minute(9999)}));
  EXPECT_EQ(table->Fields(0).Number(), kRows + 1);
  EXPECT_EQ(
      log->OpenRecordset("SELECT * FROM TConfig WHERE tCfgSKey = 'DBVersion'")->Fields("tCfgSSet").Text(),
      "1.1");
}

// Without an index that tells which rows there were the counter does, up to the last row of all.
TEST_F(MaintenanceTest, RepairNamesRowsThatNothingKnowsAnyMore) {
  Damage(path_, PageWith("2024-03-01 08:00:00P0Anna") * kPage, kPage);
  Damage(path_, PageOfRow("P2999") * kPage, kPage);
  const RepairReport report = engine_.RepairDatabase(path_);
  const auto after = Ids(path_);
  ASSERT_EQ(report.tables[1].missing.size(), 1U);
  EXPECT_EQ(report.tables[1].missing[0], (IdRange{*after.rbegin() + 1, kRows}));
  EXPECT_FALSE(after.contains(kRows));
}

TEST_F(MaintenanceTest, RepairMakesDamagedIndexesAnew) {
  const auto before = Ids(path_);
  const std::uint64_t page = PageWith("2024-03-01 08:00:00P0Anna");  // the index by which exposures are known
  Damage(path_, page * kPage + 200, kPage - 300, '\x55');
  ASSERT_FALSE(Open(path_)->Check().empty());
  const RepairReport report = engine_.RepairDatabase(path_);
  EXPECT_EQ(Ids(path_), before);
  EXPECT_TRUE(report.tables[1].missing.empty());
  const auto table = Open(path_)->OpenRecordset("TXray");
  EXPECT_TRUE(FindExposure(*table, {"P0", "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(0)}));
}

TEST_F(MaintenanceTest, ANumberThatNoCounterGivesOutDoesNotUseItUp) {
  const auto log = Open(path_);
  log->Execute("UPDATE TXray SET tXrayCulIntIDPk = 9223372036854775807 WHERE rowid = 5");
  const auto findings = log->Check();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_NE(findings[0].find("tXrayCulIntIDPk: 1"), std::string::npos) << findings[0];
  const Exposure exposure{"New", "Row", Minute(0), Minute(9999)};
  EXPECT_EQ(ErrorOf([&] { AddExposure(*log->OpenRecordset("TXray"), exposure); }), kRuleViolated);
  log->Close();
  Damage(path_, PageOfRow("P1500") * kPage, kPage);
  engine_.RepairDatabase(path_);
  const auto table = Open(path_)->OpenRecordset("TXray");
  ASSERT_TRUE(FindExposure(*table, {"P4", "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(4)}));
  EXPECT_LE(table->Fields(0).Number(), 2 * kRows) << "kept under another number";
  AddExposure(*table, exposure);
  EXPECT_TRUE(FindExposure(*table, exposure));
}

TEST_F(MaintenanceTest, RepairGoesOnAfterSeveralDamagedPages) {
  const auto before = Ids(path_);
  for (const char* name : {"P300Anna", "P1200Anna", "P2990Anna"})
    Damage(path_, PageWith(name) * kPage, 512, '\xaa');
  engine_.RepairDatabase(path_);
  const auto after = Ids(path_);
  EXPECT_GT(after.size(), before.size() - 1200);
  EXPECT_TRUE(after.contains(800) && after.contains(2000)) << "rows between the damaged pages";
  engine_.RepairDatabase(path_);
  Damage(path_, PageOfRow("P800") * kPage, kPage);
  engine_.RepairDatabase(path_);
  EXPECT_TRUE(fs::exists(folder_ / "log.mdb.damaged2")) << "an earlier damaged file is kept, too";
}

// The page that leads to all others of the table: the rows are found on their own pages.
TEST_F(MaintenanceTest, RepairFindsRowsThatNothingLeadsTo) {
  const auto before = Ids(path_);
  const auto log = Open(path_);
  log->Execute(
      "UPDATE TXray SET tXraySDr = 'Dr. Weiß', tXrayBEdDr = 1, tXrayCulIntIDPk = 500000 WHERE rowid = 77");
  log->Execute("CREATE TABLE roots AS SELECT rootpage FROM sqlite_schema WHERE name = 'TXray'");
  const auto page = log->OpenRecordset("SELECT rootpage FROM roots")->Fields(0).Number();
  log->Close();
  Damage(path_, static_cast<std::uint64_t>(page - 1) * kPage, kPage, '\x13');
  EXPECT_FALSE(Open(path_)->Check().empty());
  engine_.RepairDatabase(path_);
  auto wanted = before;
  wanted.erase(77);
  wanted.insert(500000);
  EXPECT_EQ(Ids(path_), wanted);
  const auto mended = Open(path_);
  EXPECT_TRUE(mended->Check().empty());
  const auto table = mended->OpenRecordset("TXray");
  ASSERT_TRUE(FindExposure(*table, {"P76", "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(76)}));
  EXPECT_EQ(table->Fields("tXraySDr").Text(), "Dr. Weiß");
  EXPECT_TRUE(table->Fields("tXrayBEdDr").Boolean());
  EXPECT_FALSE(table->Fields("tXrayBEdType").IsNull());
  EXPECT_TRUE(table->Fields("tXraySComment").IsNull());
}

// Whatever a bad disk does to the file, a repair ends, and what it leaves is sound or the file as it was.
TEST_F(MaintenanceTest, RepairEndsWellWhateverIsDamaged) {
  const std::string sound = Content();
  std::mt19937 random(20240302);
  for (int round = 0; round < 60; ++round) {
    folder_.Holding("log.mdb", sound);
    for (int wound = 0; wound < 1 + round % 4; ++wound) {
      const std::uint64_t at = random() % (sound.size() - 600);
      Damage(path_, at, 1 + random() % 600, static_cast<char>(random()));
    }
    const std::string damaged = Content();
    const ErrorNumber result = ErrorOf([&] { engine_.RepairDatabase(path_); });
    if (result == kNone) {
      EXPECT_EQ(ErrorOf([&] { EXPECT_TRUE(Open(path_)->TableNames().size() > 0) << round; }), kNone) << round;
    } else {
      EXPECT_TRUE(Content() == damaged) << round << ", error " << static_cast<int>(result);
    }
    for (const std::string& name : folder_.Names())
      if (name != "log.mdb" && name != "system.mdw") {
        EXPECT_EQ(name, "log.mdb.damaged") << round;
        fs::remove(folder_ / name);
      }
  }
}

TEST_F(MaintenanceTest, RepairThatIsCancelledOrReadsNothingChangesNothing) {
  Damage(path_, PageOfRow("P1500") * kPage, kPage);
  std::string before = Content();
  EXPECT_EQ(ErrorOf([&] { engine_.RepairDatabase(path_, [](double) { return false; }); }), kCancelled);
  EXPECT_TRUE(Content() == before);
  Damage(path_, 100, kPage - 100, '\xee');
  before = Content();
  EXPECT_EQ(ErrorOf([&] { engine_.RepairDatabase(path_); }), kUnrecognisedFormat);
  EXPECT_TRUE(Content() == before);
  folder_.Holding("letter.txt", "no database");
  EXPECT_EQ(ErrorOf([&] { engine_.RepairDatabase(Path("letter.txt")); }), kUnrecognisedFormat);
  EXPECT_EQ(ErrorOf([&] { engine_.RepairDatabase(Path("missing.mdb")); }), kFileNotFound);
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"letter.txt", "log.mdb", "system.mdw"}));
}

TEST_F(MaintenanceTest, CheckFindsValuesThatAFieldCannotHold) {
  const auto log = Open(path_);
  EXPECT_TRUE(log->Check().empty());
  log->Execute(
      "UPDATE TXray SET tXraySType = 'XITOOLONG' WHERE rowid = 1;"
      "UPDATE TXray SET tXrayTs = '1.2.2003' WHERE rowid IN (2, 3);"
      "UPDATE TXray SET tXrayBEdDr = 7 WHERE rowid = 4;"
      "UPDATE TXray SET tXraySDr = NULL, tXrayTs = NULL WHERE rowid = 5");
  const auto findings = log->Check();
  ASSERT_EQ(findings.size(), 3U);
  EXPECT_NE(findings[0].find("tXrayTs: 2"), std::string::npos) << findings[0];
  EXPECT_NE(findings[1].find("tXrayBEdDr: 1"), std::string::npos) << findings[1];
  EXPECT_NE(findings[2].find("tXraySType: 1"), std::string::npos) << findings[2];
}

}  // namespace
}  // namespace varnlog::dao
