#include <cstdlib>
#include <random>
#include <set>
#include <unistd.h>
#include <utility>

#include "db/dao/TableScan.h"
#include "seals/Canonical.h"
#include "tests/seals/SealedLog.h"
#include "tests/support/Child.h"

namespace varnlog::seals {
namespace {

class KilledEntryTest : public SealedLog {
 protected:
  /// A run of the program of its own: enters, corrects and closes until it is killed. Says when it begins.
  [[noreturn]] void WorksUntilKilled(unsigned seed, const std::filesystem::path& begun) {
    std::minstd_rand random(seed);
    author_.run = platform::CurrentAuthor().run;
    Opens();
    test::WriteFile(begun, "!");
    std::set<std::pair<std::int64_t, std::string>> entered;
    for (;;) {
      // Among the newest, every other of which is open at first: there are open ones in every round.
      const std::int64_t newest = log_->Greatest(kExposures, SealedFields()[0]);
      const std::int64_t exposure = newest - static_cast<std::int64_t>(random() % 40);
      const char* const field = random() % 2 == 0 ? "Volt" : "Cur";
      const std::string flag = std::string("tXrayBEd") + field;
      if (Value(exposure, flag) == "0") {
        TakesIn(1);
      } else if (random() % 4 == 0) {
        dao::ChangeGroup closing = log_->BeginChanges();
        for (const auto& [row, name] : entered) Locks(row, name);
        closing.Commit();
        entered.clear();
      } else {
        Enters(exposure, std::string("tXrayS") + field, std::to_string(random() % 99));
        entered.emplace(exposure, flag);
      }
    }
  }

  void RunsAndIsKilledAfter(useconds_t microseconds, unsigned seed) {
    log_->Close();
    const std::filesystem::path begun = folder_ / "begun";
    std::filesystem::remove(begun);
    test::Child run([&]() -> int { WorksUntilKilled(seed, begun); });
    // Some are killed while they open the log.
    while (seed % 8 != 0 && !std::filesystem::exists(begun)) usleep(1000);
    usleep(microseconds);
    run.Kill();
  }

  /// Fields that somebody entered and that are still open.
  std::string OpenEntries() {
    std::string open;
    const auto scan = log_->Scan("THistory", HistoryFields(), {});
    while (scan->Next()) {
      const std::int64_t exposure = NumberOf(scan->Values()[1]);
      std::string field = TextOf(scan->Values()[2]);
      if (field.starts_with("tXrayS") && Value(exposure, "tXrayBEd" + field.substr(6)) == "1")
        open += std::to_string(exposure) + " " + field + "; ";
    }
    return open;
  }
};

TEST_F(KilledEntryTest, TheChainHoldsAndNoCorrectionStaysOpen) {
  Opens();
  TakesIn(40);
  std::mt19937 random(7);
  const int rounds = std::getenv("VARNLOG_SLOW") == nullptr ? 12 : 300;
  std::int64_t locked = 0;
  for (int round = 0; round < rounds; ++round) {
    RunsAndIsKilledAfter(static_cast<useconds_t>(random() % 250'000), static_cast<unsigned>(random()));
    OpensUnsealed();
    ExpectSound("killed in round " + std::to_string(round));
    locked += Opens().locked;
    EXPECT_EQ(OpenEntries(), "") << "round " << round;
    ExpectSound("opened in round " + std::to_string(round));
    TakesIn(2);
  }
  EXPECT_GT(locked, 0) << "no run was killed with an open entry";
}

}  // namespace
}  // namespace varnlog::seals
