#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/Turn.h"
#include "platform/Sha256.h"
#include "tests/legacy/ConversionFixture.h"
#include "tests/support/Table.h"

namespace varnlog::legacy {
namespace {

namespace fs = std::filesystem;
using Outcome = ConversionResult::Outcome;

constexpr const char* kJet4Log = "log-1.1-jet4-scratch.mdb";

TEST_F(ConversionFixture, TakesOverEveryRowCharacterAndId) {
  for (const std::string name :
       {"log-1.0-jet3-cp1252", "log-1.1-jet3-cp1250", "log-1.1-jet3-cp1251", "log-1.1-jet3-cp1252",
        "log-1.1-jet3-password-encoded", "log-1.1-jet4-password-encoded", "log-1.1-jet4-password",
        "log-1.1-jet4-scratch", "log-1.1-upgraded-jet3", "log-1.1-upgraded-jet4"}) {
    SCOPED_TRACE(name);
    fs::remove(log_());
    fs::remove(kept());
    HasSample(name + ".mdb");
    const auto result = ConvertsInPlace();
    ASSERT_EQ(result.outcome, Outcome::kDone) << result.error;
    EXPECT_EQ(NewRows(log_()), ExpectedRows(name));
    EXPECT_EQ(samples::Read(kept()), original_);
    EXPECT_EQ(result.keptFile, kept());
    EXPECT_EQ(result.comparedValues, 25 * result.rows + 6);
    EXPECT_EQ(Setting(log_(), "JetSHA256"), platform::Sha256Hex(original_));
    EXPECT_EQ(Setting(log_(), "DBVersion"), "1.1");
    EXPECT_EQ(Setting(log_(), "ReadOnly"), "0");
    EXPECT_TRUE(Open(log_())->Check().empty());
    EXPECT_EQ(Open(log_())->TableDefs("TXray").Indexes().size(),
              Open(folder_ / "varnlog.md0")->TableDefs("TXray").Indexes().size());
    ExpectNothingGrowing();
  }
}

TEST_F(ConversionFixture, TheNextIdContinuesWhereTheOldLogsStood) {
  // The ids up to 120 were given; the last ones are deleted.
  HasSample("log-1.0-jet3-cp1252.mdb");
  ASSERT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
  const auto workspace = engine_.CreateWorkspace("W", "Admin", "");
  const auto log = workspace->OpenDatabase(log_().string(), false, false);
  const auto table = log->OpenRecordset("TXray");
  table->AddNew();
  table->Fields("tXraySName").SetText("Neu");
  table->Update();
  const auto added = log->OpenRecordset("SELECT tXrayCulIntIDPk FROM TXray WHERE tXraySName = 'Neu'");
  EXPECT_EQ(added->Fields("tXrayCulIntIDPk").Number(), 121);
}

TEST_F(ConversionFixture, AsksFirstAndTellsOfLostProtection) {
  HasSample("log-1.1-jet4-password-encoded.mdb");
  view_.yes = false;
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kDeclined);
  EXPECT_TRUE(view_.HasShown("CV_ASK|" + log_().string()));
  ExpectOnlyTheOldLog();

  view_.yes = true;
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
  for (const char* key : {"CV_DONE", "CV_PASSWORD", "CV_ENCODED"}) EXPECT_TRUE(view_.HasShown(key)) << key;
  EXPECT_EQ(view_.rowsOfStep[ConversionStep::kTakingOver], 54);
  EXPECT_EQ(view_.rowsOfStep[ConversionStep::kComparing], 54);
}

TEST_F(ConversionFixture, CancellingLeavesTheOldLogAlone) {
  HasSample(kJet4Log);
  for (const auto step :
       {ConversionStep::kReading, ConversionStep::kTakingOver, ConversionStep::kComparing}) {
    view_.cancelIn = step;
    EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kCancelled);
    ExpectOnlyTheOldLog();
  }
  EXPECT_TRUE(view_.HasShown("CV_CANCELLED"));
}

TEST_F(ConversionFixture, ADamagedLogGivesItsReadableRowsWhenTheUserWants) {
  HasOldLog(samples::ReadOurs(kJet4Log).substr(0, 126976));
  view_.yes = false;
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kDeclined);
  EXPECT_TRUE(view_.HasShown("CV_DAMAGED|" + log_().string() + "|205/262"));
  ExpectOnlyTheOldLog();

  view_.yes = true;
  const auto result = ConvertsInPlace();
  EXPECT_EQ(result.outcome, Outcome::kDone);
  EXPECT_EQ(result.rows, 205);
  EXPECT_EQ(NewRows(log_()).size(), 205U);
  EXPECT_TRUE(view_.HasShown("CV_DAMAGED_DONE"));
  EXPECT_EQ(samples::Read(kept()), original_);
}

TEST_F(ConversionFixture, RowsWithOneIdAreBothKept) {
  std::string content = samples::ReadOurs(kJet4Log);
  // Two rows of the first page of exposures begin here; the id stands behind the column count.
  ByteReader reader(samples::AsBytes(content));
  const auto id = [&](std::size_t row) {
    return 13 * 4096 + (reader.U16(13 * 4096 + 14 + 2 * row) & 0x1fffU) + 2;
  };
  content.replace(id(2), 4, content.substr(id(1), 4));
  HasOldLog(content);
  const auto result = ConvertsInPlace();
  EXPECT_EQ(result.outcome, Outcome::kDone) << result.error;
  EXPECT_EQ(result.found.lastId, 300U);
  const auto rows = NewRows(log_());
  EXPECT_EQ(rows.size(), 262U);
  EXPECT_TRUE(
      std::any_of(rows.begin(), rows.end(), [](const auto& row) { return row.starts_with("301\t"); }));
}

TEST_F(ConversionFixture, TextsThatTheirFieldCannotHoldAreCutOnlyWithConsent) {
  // Names of 32 characters under the name of the field of 5.
  std::string content = samples::ReadOurs("log-1.1-jet3-cp1252.mdb");
  const std::size_t name = content.find("\x0atXraySName");
  const std::size_t voltage = content.find("\x0atXraySVolt");
  ASSERT_TRUE(name != std::string::npos && voltage != std::string::npos);
  content.replace(name + 1, 10, "tXraySVolt");
  content.replace(voltage + 1, 10, "tXraySName");
  HasOldLog(content);
  const auto result = ConvertsInPlace();
  EXPECT_EQ(result.outcome, Outcome::kDone) << result.error;
  EXPECT_TRUE(result.found.faults.Has(FaultKind::kTooLong));
  EXPECT_TRUE(view_.HasShown("CV_DAMAGED|"));
  const auto rows = Open(log_())->OpenRecordset("SELECT * FROM TXray", dao::RecordsetType::kSnapshot);
  EXPECT_EQ(rows->Fields("tXraySVolt").Text(), "z1\r\nz");
}

TEST_F(ConversionFixture, RefusesWhatIsNoOldLog) {
  std::string newer = samples::ReadOurs(kJet4Log);
  newer[0x14] = 2;
  for (const auto& [what, content, key] : Table<const char*, std::string, const char*>{
           {"another program's", samples::ReadOurs("foreign-jet4.mdb"), "CV_ERR_FORMAT"},
           {"newer", newer, "CV_ERR_FORMAT"},
           {"tiny", newer.substr(0, 1500), "CV_ERR_FORMAT"},
           {"cut", samples::ReadOurs(kJet4Log).substr(0, 5000), "CV_ERR_UNREADABLE"}}) {
    SCOPED_TRACE(what);
    HasOldLog(content);
    const auto result = ConvertsInPlace();
    EXPECT_EQ(result.outcome, Outcome::kFailed);
    EXPECT_TRUE(result.error.starts_with(key)) << result.error;
    ExpectOnlyTheOldLog();
  }
  HasSample("broken-text-renamed.mdb");
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kNotNeeded);
}

TEST_F(ConversionFixture, WaitsForTheOldProgramToCloseTheLog) {
  HasSample(kJet4Log);
  const fs::path lockFile = folder_ / "Varnlog.ldb";
  std::ofstream(lockFile) << "PRAXIS1";
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kFailed);
  EXPECT_TRUE(view_.HasShown("CV_ERR_INUSE"));
  ExpectOnlyTheOldLog();

  view_.retries = 2;
  std::ifstream open(lockFile);
  view_.onShow = [&](const core::Message&) {
    if (view_.retries == 1) open.close();
  };
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
  EXPECT_EQ(view_.retries, 0);
}

TEST_F(ConversionFixture, OneWorkstationConvertsAtATime) {
  HasSample(kJet4Log);
  folder_.Holding("Varnlog.mdb.turn", "");  // as a crash leaves it
  {
    const Turn other(log_());
    EXPECT_TRUE(other.IsMine());
    EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kFailed);
    EXPECT_TRUE(view_.HasShown("CV_ERR_INUSE"));
  }
  ExpectOnlyTheOldLog();
  EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
}

TEST_F(ConversionFixture, AFileThatChangesMeanwhileIsNotReplaced) {
  HasSample(kJet4Log);
  const std::string changed = samples::ReadOurs("log-1.1-jet4-password.mdb");
  for (const auto step : {ConversionStep::kTakingOver, ConversionStep::kComparing}) {
    HasSample(kJet4Log);
    view_.onBegin = [&](ConversionStep begun) {
      if (begun == step) HasOldLog(changed);
    };
    EXPECT_EQ(ConvertsInPlace().outcome, Outcome::kFailed);
    ExpectOnlyTheOldLog();
  }
}

TEST_F(ConversionFixture, NeverOverwritesAnotherKeptFile) {
  HasSample(kJet4Log);
  std::ofstream(kept()) << "last year's";
  const auto result = ConvertsInPlace();
  EXPECT_EQ(result.outcome, Outcome::kFailed);
  EXPECT_EQ(result.error.substr(0, result.error.find('|', 15)), "CV_ERR_EXISTS|" + kept().string());
  EXPECT_EQ(samples::Read(kept()), "last year's");
  EXPECT_EQ(samples::Read(log_()), original_);
}

TEST_F(ConversionFixture, NeverOverwritesTheOldFileItself) {
  HasSample(kJet4Log);
  fs::create_hard_link(log_(), folder_ / "Zweitname.mdb");
  for (const fs::path& target : {log_(), folder_ / "." / "Varnlog.mdb", folder_ / "Zweitname.mdb"}) {
    const auto result = ConvertTo(Context(), log_(), target, {.overwrite = true}, view_);
    EXPECT_TRUE(result.error.starts_with("CV_ERR_EXISTS|" + target.string()));
    EXPECT_EQ(samples::Read(log_()), original_);
  }
}

TEST_F(ConversionFixture, ADamagedLogNeedsConsentToBeConvertedIntoAnotherFile) {
  HasOldLog(samples::ReadOurs(kJet4Log).substr(0, 126976));
  const fs::path target = folder_ / "Neu.mdb";
  const auto refused = ConvertTo(Context(), log_(), target, {}, view_);
  EXPECT_TRUE(refused.error.starts_with("CV_ERR_DAMAGED|" + log_().string() + "|205/262"));
  EXPECT_FALSE(fs::exists(target));
  const auto partial = ConvertTo(Context(), log_(), target, {.damaged = DamagedLog::kTakeReadable}, view_);
  EXPECT_EQ(partial.outcome, Outcome::kDone);
  EXPECT_EQ(NewRows(target).size(), 205U);
  EXPECT_TRUE(view_.shown.back().starts_with("CV_DAMAGED_DONE"));
}

}  // namespace
}  // namespace varnlog::legacy
