#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/dao/EngineOptions.h"
#include "intake/IntakeCopy.h"
#include "intake/TakenFiles.h"
#include "intake/UpdateRun.h"
#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/Practice.h"
#include "tests/support/Table.h"

namespace varnlog::intake {
namespace {

using test::Exposure;
using test::Length;
using test::ReadFile;
using test::Record;
using test::Row;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::SizeIs;
using Outcome = UpdateResult::Outcome;

class UpdateRunTest : public testing::Test {
 protected:
  /// The one row of the log after the suite has reported this and the log was updated.
  Row RowOf(const std::string& records) {
    practice_.Reports(records);
    EXPECT_EQ(practice_.Updates().outcome, Outcome::kDone);
    const std::vector<Row> rows = practice_.Log();
    EXPECT_THAT(rows, SizeIs(1));
    return rows.empty() ? Row() : rows.back();
  }
  [[nodiscard]] std::vector<std::string> Messages() const { return practice_.view.Keys(); }

  test::TestFolder folder_;
  test::Practice practice_{folder_.Path()};
};

TEST_F(UpdateRunTest, WritesEveryFieldOfANewExposure) {
  const Row row = RowOf(Exposure{.sex = "F", .pregnancy = "N"}.New());
  const Row expected = {{"tXrayCulIntIDPk", "1"},   {"tXraySName", "Muster"},
                        {"tXraySFirstname", "Max"}, {"tXrayDBirthday", "1960-02-01 00:00:00"},
                        {"tXraySSex", "f"},         {"tXraySPreg", "N"},
                        {"tXrayBEdPreg", "1"},      {"tXrayTs", "2020-04-03 10:11:12"},
                        {"tXraySDr", "Wagner"},     {"tXrayBEdDr", "0"},
                        {"tXraySType", "XI"},       {"tXrayBEdType", "0"},
                        {"tXrayBEdDiagRetry", "1"}, {"tXraySRegio", "11"},
                        {"tXrayBEdRegio", "0"},     {"tXraySRadDur", "120"},
                        {"tXrayBEdRadDur", "0"},    {"tXraySVolt", "65"},
                        {"tXrayBEdVolt", "0"},      {"tXraySCur", "7"},
                        {"tXrayBEdCur", "0"},       {"tXraySDose", "3.5"},
                        {"tXrayBEdDose", "0"}};
  EXPECT_EQ(row, expected);
  EXPECT_THAT(Messages(), ElementsAre("RU_SUCCESS"));
  EXPECT_EQ(practice_.view.messages.front().text, "RU_SUCCESS 1 0 0");
  EXPECT_FALSE(std::filesystem::exists(practice_.exchange));
  EXPECT_FALSE(practice_.ExchangePending());
}

TEST_F(UpdateRunTest, MapsCodesAndFlags) {
  const char* const kNull = "never written";
  const Table<Exposure, Row> rows = {
      {{.sex = "M"}, {{"tXraySSex", "m"}, {"tXrayBEdPreg", "0"}}},
      {{.sex = "m"}, {{"tXraySSex", "-"}, {"tXrayBEdPreg", "1"}}},
      {{.sex = "F"}, {{"tXraySSex", "f"}}},
      {{.sex = ""}, {{"tXraySSex", kNull}, {"tXrayBEdPreg", "1"}}},
      {{.pregnancy = "P"}, {{"tXraySPreg", "J"}}},
      {{.pregnancy = "N"}, {{"tXraySPreg", "N"}}},
      {{.pregnancy = "?"}, {{"tXraySPreg", "-"}}},
      {{.pregnancy = "", .responsible = "-"}, {{"tXraySPreg", kNull}, {"tXrayBEdDr", "1"}}},
      {{.responsible = ""}, {{"tXrayBEdDr", "1"}}},
      {{.responsible = "--"}, {{"tXrayBEdDr", "0"}}},
      {{.type = "~~XI"},
       {{"tXraySDiagRetry", "N.d."},
        {"tXrayBEdDiagRetry", "0"},
        {"tXraySRegio", ""},
        {"tXrayBEdRegio", "1"}}},
      {{.type = "  XP", .volt = "", .current = ""},
       {{"tXrayBEdRegio", "1"}, {"tXraySDiagRetry", kNull}, {"tXraySVolt", kNull}, {"tXraySCur", kNull}}},
      {{.duration = "", .volt = "", .current = "", .dose = ""},
       {{"tXrayBEdRadDur", "1"},
        {"tXraySRadDur", ""},
        {"tXraySVolt", "60"},
        {"tXrayBEdVolt", "1"},
        {"tXraySCur", "8"},
        {"tXrayBEdCur", "1"},
        {"tXraySDose", kNull},
        {"tXrayBEdDose", "1"}}}};
  int minute = 10;
  for (const auto& [given, expected] : rows) {
    Exposure exposure = given;
    exposure.takeTime = "11:" + std::to_string(minute++) + ":00";
    practice_.Reports(exposure.New());
    ASSERT_EQ(practice_.Updates().added, 1);
    Row stored = practice_.Log().back();
    for (const auto& [field, value] : expected)
      EXPECT_EQ(stored.emplace(field, kNull).first->second, value) << "row " << minute << ": " << field;
  }
}

TEST_F(UpdateRunTest, AddsNoExposureTwice) {
  const std::string exposures = Exposure{}.New() + Exposure{.firstName = ""}.New() +
                                Exposure{.birthday = "unknown"}.New() + Exposure{.lastName = "O'Neil"}.New();
  practice_.Reports(exposures + exposures);
  UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.read, 8);
  EXPECT_EQ(result.added, 4);
  EXPECT_EQ(result.skipped, 4);
  practice_.Reports(exposures);
  result = practice_.Updates();
  EXPECT_EQ(result.added, 0);
  EXPECT_EQ(result.skipped, 4);
  EXPECT_THAT(practice_.Log(), SizeIs(4));
}

TEST_F(UpdateRunTest, AppliesInformationToTheExposureItIsAbout) {
  Exposure known{.sex = "F", .responsible = ""};
  practice_.Reports(known.New());
  ASSERT_EQ(practice_.Updates().added, 1);
  Exposure news = known;
  news.responsible = "Berg";
  news.type = "  XP";
  practice_.Reports(news.Information() + Exposure{.lastName = "Unknown"}.Information());
  const UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.changed, 1);
  EXPECT_EQ(result.skipped, 1);
  ASSERT_THAT(practice_.Log(), SizeIs(1));
  const Row row = practice_.Log().front();
  const Row changed = {{"tXraySDr", "Berg"},    {"tXrayBEdDr", "0"},     {"tXraySType", "XP"},
                       {"tXraySRegio", ""},     {"tXrayBEdRegio", "0"},  {"tXraySSex", "f"},
                       {"tXraySRadDur", ""},    {"tXrayBEdRadDur", "0"}, {"tXraySVolt", "65"},
                       {"tXraySDiagRetry", ""}, {"tXraySDose", "3.5"}};
  EXPECT_THAT(row, IsSupersetOf(changed));
}

TEST_F(UpdateRunTest, KeepsARepeatMarkAgainstInformation) {
  const std::string report = Exposure{}.New();
  practice_.Reports(report);
  ASSERT_EQ(practice_.Updates().added, 1);
  const auto mark = [this](const char* value) {
    const auto set = practice_.globals.LogEngineGl->Database()->OpenRecordset("SELECT TXray.* FROM TXray");
    set->Edit();
    set->Fields("tXraySDiagRetry").SetText(value);
    set->Update();
  };
  const Table<const char*, const char*, const char*, const char*> rows = {{"Wdh.", "~~XI", "Wdh.", "0"},
                                                                          {"Wdh.", "11XI", "Wdh.", "1"},
                                                                          {"", "~~XI", "N.d.", "0"},
                                                                          {"N.d.", "11XI", "", "1"}};
  for (const auto& [stored, type, then, open] : rows) {
    mark(stored);
    practice_.Reports(Exposure{.type = type}.Information());
    ASSERT_EQ(practice_.Updates().changed, 1);
    Row changed = practice_.Log().front();
    EXPECT_EQ(changed["tXraySDiagRetry"], then) << stored << " " << type;
    EXPECT_EQ(changed["tXrayBEdDiagRetry"], open) << stored << " " << type;
  }
}

TEST_F(UpdateRunTest, ConsumesWhatIsNoExposure) {
  practice_.Reports(Exposure{.type = "11YI"}.New() + Exposure{.type = ""}.New() + Record('Q', {"?"}));
  const UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.read, 2);
  EXPECT_EQ(result.skipped, 2);
  EXPECT_EQ(practice_.view.done, 2);
  EXPECT_THAT(practice_.Log(), SizeIs(0));
  EXPECT_FALSE(std::filesystem::exists(practice_.exchange));
}

TEST_F(UpdateRunTest, ReportsDatesAndTimesThatCannotBeRead) {
  const Table<Exposure, const char*, const char*, const char*> rows = {
      {{.birthday = "31.13.1960"}, "RU_ERR_BIRTHDATE", "tXrayDBirthday", "1880-01-01 00:00:00"},
      {{.birthday = ""}, "RU_ERR_BIRTHDATE", "tXrayDBirthday", "1880-01-01 00:00:00"},
      {{.birthday = " 1.02.1960"}, "RU_SUCCESS", "tXrayDBirthday", "1960-02-01 00:00:00"},
      {{.takeDate = " 5. 3.2024"}, "RU_SUCCESS", "tXrayTs", "2024-03-05 10:11:12"},
      {{.takeDate = "01.01.2025"}, "RU_ERR_TAKEDATE", "tXrayTs", "1880-01-01 10:11:12"},
      {{.takeTime = "24:00:00"}, "RU_ERR_TAKETIME", "tXrayTs", "2020-04-03 00:00:00"},
      {{.takeDate = "31.02.2001"}, "RU_SUCCESS", "tXrayTs", "2001-03-03 10:11:12"}};
  for (const auto& [given, message, field, stored] : rows) {
    Exposure exposure = given;
    exposure.firstName = exposure.birthday + exposure.takeDate;  // all of them others
    practice_.Reports(exposure.New());
    ASSERT_EQ(practice_.Updates().added, 1) << message;
    EXPECT_EQ(Messages().front(), message);
    EXPECT_EQ(practice_.Log().back()[field], stored);
  }
  practice_.Reports(Exposure{.birthday = "?", .takeDate = "?", .takeTime = "?"}.New());
  ASSERT_EQ(practice_.Updates().added, 1);
  EXPECT_THAT(Messages(),
              ElementsAre("RU_ERR_BIRTHDATE", "RU_ERR_TAKEDATE", "RU_ERR_TAKETIME", "RU_SUCCESS"));
  EXPECT_THAT(practice_.view.messages[0].text, HasSubstr("Muster Max 01.01.1880"));
  EXPECT_THAT(practice_.view.messages[2].text, HasSubstr("Muster Max 00:00:00"));
  EXPECT_EQ(practice_.view.messages[0].title, "RU_XRUPDATE");
  EXPECT_EQ(practice_.view.messages[0].icon, core::MessageIcon::kCritical);
}

TEST_F(UpdateRunTest, CutsAndReportsWhatIsTooLong) {
  const std::string name = std::string(20, '\x84') + std::string(20, 'x');  // 20 times ä
  const Exposure exposure{.lastName = name, .responsible = "Dr. Wagner-Berg", .duration = "123456789"};
  const Row row = RowOf(exposure.New());
  std::string expected;
  for (int i = 0; i < 20; ++i) expected += "ä";
  EXPECT_EQ(row.at("tXraySName"), expected + std::string(12, 'x'));
  EXPECT_EQ(row.at("tXraySDr"), "Dr. Wagner-B");
  EXPECT_EQ(row.at("tXraySRadDur"), "12345678");
  EXPECT_THAT(Messages(), ElementsAre("RU_SUCCESS"));
  ASSERT_THAT(practice_.view.notices, SizeIs(3));
  EXPECT_THAT(practice_.view.notices[1], HasSubstr("RU_ERR_FIELDLEN"));
  EXPECT_THAT(practice_.view.notices[1], HasSubstr("Max $dDefault$ RU_FIELD_DR"));
  practice_.Reports(exposure.New());
  EXPECT_EQ(practice_.Updates().skipped, 1);
  EXPECT_THAT(practice_.view.notices, SizeIs(0));
}

TEST_F(UpdateRunTest, ABadDateCanBeListedAtTheEndOrEndTheRun) {
  using core::MessageAnswer;
  std::string records;
  for (const char* name : {"Auer", "Berg", "Cohn"}) {
    records += Exposure{.lastName = name, .birthday = "?", .takeTime = "?"}.New();
  }
  practice_.Reports(records + Exposure{.lastName = "Cohn", .birthday = "!", .takeTime = "!"}.New());
  test::Practice other(folder_.Path());
  other.globals.LogEngineGl->TuneLockRetry(1);
  practice_.view.onMessage = [&] {
    EXPECT_TRUE(other.globals.LogEngineGl->TransactionStart()) << "others wait for the answer";
    other.globals.LogEngineGl->TransactionRollback();
  };
  practice_.view.answers = {MessageAnswer::kOk, MessageAnswer::kCancel};
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kCancelled);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_BIRTHDATE", "RU_ERR_TAKETIME"));
  EXPECT_THAT(practice_.Log(), SizeIs(0));
  EXPECT_TRUE(practice_.globals.UpdateDeclinedGl);

  practice_.view.answers = {MessageAnswer::kOk, MessageAnswer::kOk, MessageAnswer::kList};
  EXPECT_EQ(practice_.Updates().added, 3);
  EXPECT_THAT(Messages(),
              ElementsAre("RU_ERR_BIRTHDATE", "RU_ERR_TAKETIME", "RU_ERR_BIRTHDATE", "RU_SUCCESS"));
  // Two of Auer and one of Berg were said already. The last is taken for the one before it, and is named.
  const std::vector<std::string>& listed = practice_.view.notices;
  ASSERT_THAT(listed, SizeIs(6));
  EXPECT_THAT(listed[0], HasSubstr("RU_ERR_TAKETIME Berg"));
  EXPECT_THAT(listed[1], HasSubstr("RU_ERR_BIRTHDATE Cohn"));
  EXPECT_THAT(listed[5], HasSubstr("RU_ERR_SKIPPED Cohn Max"));
  EXPECT_THAT(listed[5], HasSubstr("03.04.2020 00:00:00"));
}

TEST_F(UpdateRunTest, AsksFirstWhenTheClockIsBehindTheLog) {
  practice_.Reports(Exposure{.takeDate = "01.07.2024", .takeTime = "11:00:00"}.New());
  EXPECT_EQ(practice_.Updates().added, 1);
  practice_.Reports(Exposure{.takeDate = "01.07.2024", .takeTime = "12:00:01"}.New());
  EXPECT_EQ(practice_.Updates().added, 1) << "less than a day";
  practice_.Reports(Exposure{}.New());
  practice_.view.answers = {core::MessageAnswer::kNo};
  const UpdateResult refused = practice_.Updates();
  EXPECT_EQ(refused.outcome, Outcome::kCancelled);
  EXPECT_TRUE(refused.clockDoubted);
  EXPECT_EQ(practice_.view.messages.front().text, "RU_CLOCK 30.06.2024 01.07.2024");
  EXPECT_EQ(ReadFile(practice_.exchange), Exposure{}.New());
  RunOptions options = test::Practice::kHasty;
  options.despiteClock = true;
  EXPECT_EQ(practice_.Updates(options).added, 1);
  practice_.Reports(Exposure{.takeTime = "10:11:13"}.New());
  practice_.view.answers = {core::MessageAnswer::kYes};
  EXPECT_EQ(practice_.Updates().added, 1);
}

TEST_F(UpdateRunTest, EndsAtOnceWithoutAnExchangeFile) {
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kNothingPending);
  EXPECT_THAT(Messages(), SizeIs(0));
  EXPECT_FALSE(practice_.ExchangePending());
  practice_.Reports("");
  EXPECT_FALSE(practice_.ExchangePending());
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kDone);
  EXPECT_THAT(Messages(), SizeIs(0));
}

TEST_F(UpdateRunTest, CancelledLeavesEverythingAsItWas) {
  std::string records;
  for (int i = 10; i < 20; ++i) records += Exposure{.takeTime = "12:00:" + std::to_string(i)}.New();
  practice_.Reports(records);
  practice_.view.onAdvance = [this](std::int64_t done) {
    if (done == 4) practice_.globals.UpdateDeclinedGl = true;
  };
  const UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.outcome, Outcome::kCancelled);
  EXPECT_EQ(result.added, 0);
  EXPECT_EQ(practice_.view.recordCount, 10);
  EXPECT_EQ(practice_.view.done, 4);
  EXPECT_THAT(Messages(), SizeIs(0));
  EXPECT_THAT(practice_.Log(), SizeIs(0));
  EXPECT_EQ(ReadFile(practice_.exchange), records);
  EXPECT_EQ(folder_.Count(".intake"), 0);
  practice_.view.onAdvance = {};

  // The user is asked when the log is free again; who thinks better of it misses nothing.
  test::Practice other(folder_.Path());
  other.globals.LogEngineGl->TuneLockRetry(1);
  bool isStopping = true;
  practice_.view.onAdvance = [&](std::int64_t done) {
    practice_.view.cancelWanted = done == 4 && practice_.view.onAskCancel;
  };
  practice_.view.onAskCancel = [&] {
    EXPECT_TRUE(other.globals.LogEngineGl->TransactionStart());
    other.globals.LogEngineGl->TransactionRollback();
    practice_.globals.UpdateDeclinedGl = isStopping;
    if (!isStopping) practice_.view.onAskCancel = {};
  };
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kCancelled);
  EXPECT_THAT(practice_.Log(), SizeIs(0));
  isStopping = false;
  const UpdateResult resumed = practice_.Updates();
  EXPECT_EQ(resumed.read, 10);
  EXPECT_EQ(resumed.added, 10);
}

TEST_F(UpdateRunTest, AsksAgainWhenTheExchangeFileCannotBeOpened) {
  std::filesystem::create_directory(practice_.exchange);
  practice_.view.answers = {core::MessageAnswer::kRetry};
  const UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.outcome, Outcome::kCancelled);
  EXPECT_TRUE(practice_.globals.UpdateDeclinedGl);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_XRUPDATE", "RU_ERR_XRUPDATE"));
  EXPECT_EQ(practice_.view.messages[0].buttons, core::MessageButtons::kRetryCancel);
  practice_.view.answers = {core::MessageAnswer::kRetry};
  practice_.view.onMessage = [this] {
    std::filesystem::remove(practice_.exchange);
    practice_.Reports(Exposure{}.New());
    practice_.view.onMessage = {};
  };
  EXPECT_EQ(practice_.Updates().added, 1);
}

TEST_F(UpdateRunTest, TakesNothingOfADamagedFile) {
  const std::string good = Exposure{}.New();
  for (const std::string& bad : {good + Length(3) + "T#", good + Length(-5), Length(9999) + good}) {
    std::filesystem::remove(practice_.exchange);
    practice_.Reports(bad);
    const UpdateResult result = practice_.Updates();
    EXPECT_EQ(result.outcome, Outcome::kFailed);
    EXPECT_THAT(result.error, HasSubstr("RU_ERR_FILEREAD"));
    EXPECT_THAT(Messages(), ElementsAre("RU_ERR_FILEREAD"));
    EXPECT_EQ(ReadFile(practice_.exchange), bad);
    EXPECT_THAT(practice_.Log(), SizeIs(0));
  }
}

TEST_F(UpdateRunTest, LeavesWhatIsStillBeingWritten) {
  const std::string first = Exposure{}.New();
  const std::string second = Exposure{.takeTime = "09:00:00"}.New();
  practice_.Reports(first + second.substr(0, 50));
  EXPECT_EQ(practice_.Updates().added, 1);
  EXPECT_EQ(ReadFile(practice_.exchange), second.substr(0, 50));
  // Alone it looks like a damaged file, and is one only if nothing happens to it any more.
  RunOptions options = test::Practice::kHasty;
  options.quiet = std::chrono::milliseconds(60'000);
  options.patience = std::chrono::milliseconds(20);
  EXPECT_FALSE(practice_.ExchangePending());
  EXPECT_EQ(practice_.Updates(options).outcome, Outcome::kNothingPending);
  EXPECT_THAT(Messages(), SizeIs(0));
  EXPECT_GT(practice_.view.waits, 0);
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kFailed);
  EXPECT_EQ(ReadFile(practice_.exchange), second.substr(0, 50));
  practice_.Reports(second.substr(50));
  EXPECT_EQ(practice_.Updates().added, 1);
  EXPECT_THAT(practice_.Log(), SizeIs(2));
}

TEST_F(UpdateRunTest, FailsCleanlyWhenTheLogIsLocked) {
  practice_.Reports(Exposure{}.New());
  test::Practice other(folder_.Path());
  practice_.globals.LogEngineGl->TuneLockRetry(1);
  ASSERT_TRUE(other.globals.LogEngineGl->TransactionStart());
  const UpdateResult result = practice_.Updates();
  EXPECT_EQ(result.outcome, Outcome::kFailed);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_WRITE"));
  EXPECT_THAT(result.error, HasSubstr("3045: GL_ERR_3045")) << "in words that the user knows";
  EXPECT_EQ(ReadFile(practice_.exchange), Exposure{}.New());
  other.globals.LogEngineGl->TransactionRollback();
  EXPECT_EQ(practice_.Updates().added, 1);
  // Who waits for the log outlasts an update that waits for the suite.
  const dao::EngineOptions standard;
  EXPECT_GT(standard.lockRetry * standard.lockDelay, 2 * RunOptions().patience.count());
}

TEST_F(UpdateRunTest, LeavesTheExchangeFileThatAnotherLogHasTakenMeanwhile) {
  std::filesystem::create_directory(folder_ / "other");
  test::Practice other(folder_ / "other");
  other.globals.ExchangeFileGl = practice_.globals.ExchangeFileGl;
  const std::string late = Exposure{.takeTime = "23:00:00"}.New() + Exposure{.takeTime = "23:00:01"}.New();
  practice_.Reports(Exposure{}.New());
  practice_.view.onAdvance = [&](std::int64_t) {
    EXPECT_EQ(other.Updates().added, 1);
    practice_.Reports(late);
  };
  EXPECT_EQ(practice_.Updates().added, 1);
  EXPECT_EQ(ReadFile(practice_.exchange), late);
  practice_.view.onAdvance = {};
  EXPECT_EQ(practice_.Updates().added, 2);
}

TEST_F(UpdateRunTest, AnErrorIsNoDamage) {
  // A folder stands where the file should be, as good as a disk that fails.
  practice_.Reports(Exposure{}.New());
  for (const std::string& name : {test::CopyName(), std::string("varnlog.sdx.shift")}) {
    std::filesystem::create_directories(folder_ / name);
    const UpdateResult result = practice_.Updates();
    EXPECT_NE(result.outcome, Outcome::kDone) << name;
    EXPECT_TRUE(std::filesystem::is_directory(folder_ / name));
    EXPECT_EQ(ReadFile(practice_.exchange), Exposure{}.New());
    std::filesystem::remove(folder_ / name);
  }
  EXPECT_EQ(practice_.Updates().added, 1);
}

TEST_F(UpdateRunTest, CommitsWhenTheFileCannotBeEmptied) {
  const std::string records = Exposure{}.New() + Exposure{.responsible = "suite"}.Information();
  practice_.Reports(records);
  // Another site whose exposures come into the same log.
  const test::TestFolder elsewhere;
  std::filesystem::copy(practice_.log, elsewhere / "Varnlog.mdb");
  test::Practice other(elsewhere.Path());
  // A folder comes to stand where the safe copy is to be.
  RunOptions options = test::Practice::kHasty;
  options.onStep = [this](RunStep step) {
    if (step == RunStep::kRowsWritten) std::filesystem::create_directory(folder_ / test::CopyName());
  };
  const UpdateResult result = practice_.Updates(options);
  EXPECT_EQ(result.outcome, Outcome::kDone);
  EXPECT_EQ(result.added, 1);
  EXPECT_TRUE(result.leftInFile);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_FILEDEL", "RU_SUCCESS"));
  EXPECT_EQ(ReadFile(practice_.exchange), records);
  std::filesystem::remove(folder_ / test::CopyName());
  // What the user enters meanwhile is not taken back by information that was applied already.
  {
    const seals::Purpose asTheSuiteMay(practice_.globals.LedgerGl.get(), seals::SealKind::kIntake);
    const auto row = practice_.globals.LogEngineGl->Database()->OpenRecordset("SELECT TXray.* FROM TXray");
    row->Edit();
    row->Fields("tXraySDr").SetText("user");
    row->Update();
  }
  if (varnlog::test::LogsAreOnServer()) {
    other.Reports(Exposure{.takeTime = "01:02:03"}.New());
    EXPECT_EQ(other.Updates().added, 1) << "another site empties its own file";
  }
  practice_.Reports(Exposure{.type = "12XI", .responsible = "user"}.Information());
  const UpdateResult next = practice_.Updates();
  EXPECT_EQ(next.read, 1) << "what is in the log is passed over";
  EXPECT_EQ(next.changed, 1);
  EXPECT_FALSE(next.leftInFile);
  EXPECT_EQ(practice_.Log().front()["tXraySDr"], "user");
  practice_.Reports(records);
  EXPECT_EQ(practice_.Updates().changed, 1) << "reported again, after the file was emptied";
  EXPECT_FALSE(std::filesystem::exists(practice_.exchange));
}

TEST_F(UpdateRunTest, PutsAwayLeftOversThatNobodyCanRead) {
  test::WriteFile(folder_ / test::CopyName(), "not a copy");
  test::WriteFile(folder_ / "varnlog.sdx.1600000000000-2.taken", "xx" + Length(-1) + "bad");
  test::WriteFile(folder_ / "varnlog.sdx.1600000000001-0.taken", Exposure{}.New() + Length(99));
  test::WriteFile(folder_ / "varnlog.sdx.shift", "not a journal");
  practice_.Reports(Exposure{.takeTime = "01:02:03"}.New());
  EXPECT_TRUE(practice_.ExchangePending());
  EXPECT_EQ(practice_.Updates().added, 2);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_DAMAGED", "RU_ERR_DAMAGED", "RU_ERR_DAMAGED", "RU_SUCCESS"));
  EXPECT_THAT(practice_.view.messages[1].text, HasSubstr(test::CopyName() + ".damaged"));
  EXPECT_EQ(ReadFile(folder_ / (test::CopyName() + ".damaged")), "not a copy");
  EXPECT_EQ(folder_.Count(".taken.damaged"), 1);
  EXPECT_EQ(folder_.Count(".shift.damaged"), 1);
  // The record that was never finished: nobody has the file open, so nobody will.
  EXPECT_EQ(practice_.Updates().outcome, Outcome::kNothingPending);
  EXPECT_THAT(Messages(), ElementsAre("RU_ERR_DAMAGED"));
  EXPECT_FALSE(practice_.ExchangePending());
  EXPECT_EQ(folder_.Count(".taken.damaged"), 2);
}

}  // namespace
}  // namespace varnlog::intake
