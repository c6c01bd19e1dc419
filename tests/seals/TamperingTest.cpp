#include <cstdlib>
#include <functional>
#include <random>

#include "seals/SealedFields.h"
#include "tests/seals/SealedLog.h"

namespace varnlog::seals {
namespace {

/// VARNLOG_SLOW=1 runs as many rounds as a release is tested with, a greater number so many.
int Rounds(int few, int many) {
  const char* const slow = std::getenv("VARNLOG_SLOW");
  if (slow == nullptr) return few;
  const int rounds = std::atoi(slow);
  return rounds > 1 ? rounds : many;
}

class TamperingTest : public SealedLog {
 protected:
  TamperingTest() {
    Opens();
    log_->ForgoSafety();  // nothing here outlives a crash
    while (exposures_ < 2000) {
      TakesIn(40);
      exposures_ += 40;
      for (int i = 0; i < 6; ++i) Works();
    }
  }

  int Random(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }
  std::int64_t AnExposure() { return 1 + Random(exposures_); }
  std::string Text() { return std::to_string(Random(100'000)); }

  /// Anything that a person or the suite may do.
  void Works() {
    const std::int64_t open = 1 + 2 * Random(exposures_ / 2);
    switch (Random(5)) {
      case 0:
        return SuiteChanges(AnExposure(), {{"tXraySDr", Text()}, {"tXrayBEdDr", Random(2) == 0 ? "0" : "1"}});
      case 1:
        return Locks(open, "tXrayBEdCur");
      case 2:
        return Enters(AnExposure(), "tXraySComment", Text());
      case 3:
        if (Value(open, "tXrayBEdCur") == "1") Enters(open, "tXraySCur", std::to_string(Random(99)));
        return;
      default:
        return Enters(open, "tXraySVolt", std::to_string(Random(99)));
    }
  }

  std::string Where(const std::string& key, std::int64_t number) {
    return " WHERE " + key + " = " + std::to_string(number);
  }
  /// One byte of a value.
  void ChangesValue(const std::string& table, const std::string& key, const std::string& field,
                    std::int64_t number) {
    Executes("UPDATE " + table + " SET " + field + " = CASE WHEN " + field + " IS NULL THEN 'x' WHEN " +
             field + " IN (0, 1) THEN 1 - " + field + " ELSE " + field + " || 'x' END" + Where(key, number));
  }
  std::int64_t A(const char* table, const char* key) {
    return 1 + Random(static_cast<int>(log_->Greatest(table, key)));
  }

  /// What was done.
  std::string Tampers() {
    switch (Random(10)) {
      case 0: {
        const std::int64_t row = AnExposure();
        Executes("DELETE FROM TXray" + Where("tXrayCulIntIDPk", row));
        return "exposure deleted " + std::to_string(row);
      }
      case 1:
        Executes("INSERT INTO TXray (tXraySName) VALUES ('Neu')");
        return "exposure inserted";
      case 2: {
        const std::int64_t row = 1 + Random(exposures_ - 1);
        const std::string at = std::to_string(row);
        const std::string next = std::to_string(row + 1);
        Executes("UPDATE TXray SET tXrayCulIntIDPk = -1 WHERE tXrayCulIntIDPk = " + at +
                 "; UPDATE TXray SET tXrayCulIntIDPk = " + at + " WHERE tXrayCulIntIDPk = " + next +
                 "; UPDATE TXray SET tXrayCulIntIDPk = " + next + " WHERE tXrayCulIntIDPk = -1");
        return "exposure swapped " + at;
      }
      case 3: {
        const std::int64_t entry = A("THistory", "tHistCulNrPk");
        Executes("DELETE FROM THistory" + Where("tHistCulNrPk", entry));
        return "entry deleted " + std::to_string(entry);
      }
      case 4: {
        const std::int64_t entry = A("THistory", "tHistCulNrPk");
        const char* const fields[] = {"tHistSNew", "tHistSOld", "tHistSKind", "tHistSField"};
        ChangesValue("THistory", "tHistCulNrPk", fields[Random(4)], entry);
        return "entry changed " + std::to_string(entry);
      }
      case 5: {
        const std::int64_t seal = A("TSeal", "tSealCulNrPk");
        const auto field = 1 + static_cast<std::size_t>(Random(static_cast<int>(SealFields().size()) - 1));
        ChangesValue("TSeal", "tSealCulNrPk", SealFields()[field], seal);
        return "seal changed " + SealFields()[field] + " " + std::to_string(seal);
      }
      case 6: {
        const std::int64_t seal = A("TSeal", "tSealCulNrPk") - 1;
        Executes("DELETE FROM TSeal" + Where("tSealCulNrPk", std::max<std::int64_t>(1, seal)));
        return "seal deleted " + std::to_string(seal);
      }
      case 7:
        Executes("DROP TRIGGER rXrayChange");
        if (Random(2) == 0) return "rule removed";
        [[fallthrough]];
      default: {
        const std::string& field = SealedFields()[1 + static_cast<std::size_t>(Random(kFieldCount - 1))];
        const std::int64_t row = AnExposure();
        ChangesValue("TXray", "tXrayCulIntIDPk", field, row);
        log_->SetRules(LogRules());
        return "value changed " + field + " " + std::to_string(row);
      }
    }
  }

  int exposures_ = 0;
  std::mt19937 random_{20240630};
};

TEST_F(TamperingTest, EveryTamperingIsFound) {
  ExpectSound("before");
  OpensUnsealed();
  for (int round = 0; round < Rounds(150, 100'000); ++round) {
    workspace_->BeginTrans();
    const std::string what = Tampers();
    const Verification result = Verified();
    workspace_->Rollback();
    ASSERT_FALSE(result.IsSound()) << what << ", round " << round;
  }
  ExpectSound("after");
}

TEST_F(TamperingTest, WhatWasTamperedWithIsNamed) {
  OpensUnsealed();
  const auto first = [this](const std::string& sql) {
    workspace_->BeginTrans();
    Executes(sql);
    const Verification result = Verified();
    workspace_->Rollback();
    return result.findings.empty() ? Finding{Fault::kNoSeals, -1, 0, "nothing found"}
                                   : result.findings.front();
  };
  const std::string row = "tXrayCulIntIDPk = ";
  EXPECT_EQ(first("UPDATE TXray SET tXraySName = 'M' WHERE " + row + "1990"),
            (Finding{Fault::kExposureChanged, 1990, 0, {}}));
  EXPECT_EQ(first("DELETE FROM TXray WHERE " + row + "1234"),
            (Finding{Fault::kExposureDeleted, 1234, 0, {}}));
  EXPECT_EQ(first("UPDATE TXray SET " + row + "-7 WHERE " + row + "8; UPDATE TXray SET " + row + "8 WHERE " +
                  row + "10; UPDATE TXray SET " + row + "10 WHERE " + row + "-7")
                .fault,
            Fault::kExposuresSwapped);
  EXPECT_EQ(first("DELETE FROM THistory WHERE tHistCulNrPk = 100"),
            (Finding{Fault::kEntryDeleted, 100, 0, {}}));
  EXPECT_EQ(first("UPDATE THistory SET tHistSKind = 'x' WHERE tHistCulNrPk = 100").number, 100);
  EXPECT_EQ(first("DELETE FROM TSeal WHERE tSealCulNrPk = 50"), (Finding{Fault::kSealDeleted, 50, 0, {}}));
  EXPECT_EQ(first("UPDATE TSeal SET tSealSAccount = 'x' WHERE tSealCulNrPk = 50"),
            (Finding{Fault::kSealChanged, 50, 0, {}}));
}

TEST_F(TamperingTest, AnOldStateIsFoundByTheAnchorOnly) {
  const Head before = Verified().head;
  log_->Close();
  std::filesystem::copy_file(folder_ / "Varnlog.mdb", folder_ / "old.mdb");
  Opens();
  TakesIn(1);
  Works();
  const Anchor anchor{Verified().head.number, Verified().head.digest};
  EXPECT_TRUE(Verify(*log_, ReadAnchor(PrintedAnchor(before))).IsSound());
  log_->Close();
  std::filesystem::rename(folder_ / "old.mdb", folder_ / "Varnlog.mdb");
  OpensUnsealed();
  EXPECT_TRUE(Verified().IsSound());
  const Verification result = Verify(*log_, anchor);
  ASSERT_EQ(result.findings.size(), 1U);
  EXPECT_EQ(result.findings[0].fault, Fault::kAnchorMissing);
}

TEST_F(TamperingTest, LegalWorkNeverRaisesTheAlarm) {
  log_->Close();
  std::filesystem::copy_file(folder_ / "Varnlog.mdb", folder_ / "start.mdb");
  constexpr int kRoundsALog = 500;  // it would grow without end
  for (int round = 0; round < Rounds(60, 100'000); ++round) {
    if (round % kRoundsALog == 0) {
      log_->Close();
      varnlog::test::CopyOver(folder_ / "start.mdb", folder_ / "Varnlog.mdb");
      Opens();
      log_->ForgoSafety();
    }
    Works();
    if (round % 10 == 0) TakesIn(1 + Random(3));
    ASSERT_TRUE(Verified().IsSound()) << "round " << round;
  }
}

}  // namespace
}  // namespace varnlog::seals
