#include <fstream>
#include <iterator>
#include <set>

#include "seals/History.h"
#include "seals/RepairSeal.h"
#include "tests/seals/SealedLog.h"

namespace varnlog::seals {
namespace {

class RepairSealTest : public SealedLog {
 protected:
  static constexpr std::size_t kPage = 16384;

  RepairSealTest() {
    Opens();
    log_->ForgoSafety();
    for (int i = 0; i < 12; ++i) {
      TakesIn(40);
      for (int entry = 0; entry < 25; ++entry)
        Enters(1 + 2 * ((i * 7 + entry * 3) % (20 * (i + 1))), "tXraySVolt", std::to_string(50 + entry));
    }
    log_->Close();
    std::ifstream file(File(), std::ios::binary);
    content_ = {std::istreambuf_iterator<char>(file), {}};
  }

  [[nodiscard]] std::filesystem::path File() const { return folder_ / "Varnlog.mdb"; }

  /// False when the file could not be mended.
  bool LosesAndRepairs(std::size_t page) {
    log_->Close();
    std::string damaged = content_;
    damaged.replace(page * kPage, kPage, kPage, '\0');
    std::ofstream(File(), std::ios::binary | std::ios::trunc) << damaged;
    try {
      const auto report =
          engine_.RepairDatabase(File().string(), {}, [this](dao::Database& mended, const auto&) {
            SealRepaired(mended, mended.UnusedIds(kExposures), author_, clock_);
          });
      return report.WasDamaged();
    } catch (const dao::EngineError&) {
      return false;
    }
  }

  std::string content_;
};

TEST_F(RepairSealTest, WhateverWasLostIsNamedAndTheRestStaysSealed) {
  std::set<Loss::What> lost;
  int repaired = 0;
  for (std::size_t page = 2; page < content_.size() / kPage; page += 2) {
    if (!LosesAndRepairs(page)) continue;
    ++repaired;
    OpensUnsealed();
    if (!HasSealTables(*log_) || ReadHead(*log_).number == 0) continue;
    const std::string when = "page " + std::to_string(page);
    const Verification result = Verified();
    EXPECT_EQ(result.findings, std::vector<Finding>()) << when;
    EXPECT_EQ(result.notes.back().what, Note::What::kRepaired) << when;
    for (const Loss& loss : result.losses) lost.insert(loss.what);
    if (page % 10 != 2) continue;
    EXPECT_FALSE(Opens().finding) << when;
    TakesIn(1);
    const std::int64_t left = log_->Greatest(kExposures, "tXrayCulIntIDPk");
    Enters(left, "tXraySComment", "o. B.");
    ExpectSound(when);
    std::vector<std::string> tamperings = {
        "UPDATE TXray SET tXraySDose = '9' WHERE tXrayCulIntIDPk = (SELECT min(tXrayCulIntIDPk) FROM TXray)",
        "DELETE FROM TXray WHERE tXrayCulIntIDPk = (SELECT min(tXrayCulIntIDPk) FROM TXray)",
        "UPDATE THistory SET tHistSNew = '9' WHERE tHistCulNrPk = (SELECT min(tHistCulNrPk) FROM THistory)",
        "UPDATE TSeal SET tSealSAccount = 'x' WHERE tSealCulNrPk = (SELECT min(tSealCulNrPk) FROM TSeal)"};
    if (!result.losses.empty())
      tamperings.emplace_back("UPDATE THistory SET tHistSOld = '9' WHERE tHistSKind = 'repair'");
    OpensUnsealed();
    for (const std::string& tampering : tamperings) {
      workspace_->BeginTrans();
      Executes(tampering);
      EXPECT_FALSE(Verified().IsSound()) << when << ": " << tampering;
      workspace_->Rollback();
    }
  }
  EXPECT_GT(repaired, 6);
  EXPECT_EQ(lost.size(), 3U) << "exposures, entries and seals were lost in turn";
}

}  // namespace
}  // namespace varnlog::seals
