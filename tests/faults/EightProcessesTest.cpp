#include <algorithm>
#include <deque>
#include <functional>
#include <random>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "platform/CodePage.h"
#include "tests/faults/Scene.h"
#include "tests/support/Child.h"

namespace varnlog::faults {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kCorrected = 20;  // the first rows, which one workstation corrects again and again

/// A practice in which everybody works on one log at once: the suite reports, two workstations update (one is
/// killed now and then), one corrects, others list, check, compact and repair.
class EightProcessesTest : public testing::Test {
 protected:
  /// One of the eight: repeats `turn` until the time is over. Each turn says what was wrong with it.
  void Starts(const std::string& role, const std::function<std::string(const std::string& role)>& turn) {
    workers_.emplace_back([&] {
      int turns = 0;
      done_ = 0;
      for (; steady_clock::now() < end_; ++turns) {
        const std::string wrong = turn(role);
        if (!wrong.empty()) AppendFile(Note(role + " wrong"), wrong + "\n");
      }
      WriteFile(Note(role + " turns"), std::to_string(turns) + ", done " + std::to_string(done_));
      return 0;
    });
  }
  [[nodiscard]] Outcome Runs(const std::string& role, const std::string& arguments,
                             std::optional<milliseconds> killedAfter = {}) {
    Outcome outcome = faults::Run({.arguments = arguments,
                                   .program = suite_.program(),
                                   .folder = suite_.log().parent_path(),
                                   .output = Note(role),
                                   .environment = {},
                                   .killedAfter = killedAfter});
    if (outcome.status == 0) ++done_;
    if (outcome.status == 1) AppendFile(Note(role + " refused"), outcome.err);
    return outcome;
  }
  [[nodiscard]] std::filesystem::path Note(const std::string& name) const {
    return suite_.suite().parent_path() / name;
  }
  /// Appends one record as the suite does; now and then it keeps the file open for a while.
  void Reports(int patients) {
    const platform::CodePage oem(850);
    std::string record;
    tools::AppendRecord(
        cli::NewExposure("Patient " + std::to_string(patients), "XI", "01.03.2004", "08:00:00"), oem, record);
    constexpr int kHeldFor = 25;
    if (patients % kHeldFor == 0) held_.close();
    if (patients % (8 * kHeldFor) == 0) held_.open(suite_.exchangeFile(), std::ios::binary | std::ios::app);
    if (held_.is_open()) {
      held_ << record << std::flush;
    } else {
      AppendFile(suite_.exchangeFile(), record);
    }
  }

  /// Rows whose comment is older than the last one that the user saw stored.
  [[nodiscard]] std::string LostCorrections() const {
    std::string lost;
    int corrected = 0;
    suite_.WithLog(false, [&](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* FROM TXray WHERE tXrayCulIntIDPk <= 20");
      for (; !rows->IsEOF(); rows->MoveNext()) {
        const std::string patient(rows->Fields("tXraySName").Text());
        const std::string comment(rows->Fields("tXraySComment").Text());
        const std::string stored = ReadFile(Note("stored " + patient));
        if (stored.empty()) continue;
        ++corrected;
        if (std::atoi(comment.substr(std::min(comment.size(), kComment.size())).c_str()) < std::stoi(stored))
          lost.append(patient).append(" has '").append(comment).append("' instead of ").append(stored + "; ");
      }
    });
    return corrected > 0 ? lost : "nothing was corrected";
  }

  static constexpr std::string_view kComment = "corrected ";
  cli::Installation suite_{"acht"};
  steady_clock::time_point end_ = steady_clock::now() + std::chrono::seconds(IsLong() ? 300 : 8);
  std::deque<test::Child> workers_;
  int done_ = 0;  // runs of this process that ended with status 0
  std::ofstream held_;
};

std::string WrongCheck(const Outcome& outcome) {
  // Somebody else's exclusive use is said on the error output; what is wrong with the log is the output.
  return outcome.status == 1 && !outcome.out.empty() ? "check says " + outcome.out : WrongEnding(outcome);
}

TEST_F(EightProcessesTest, LoseAndDoubleNothing) {
  int patients = 0;
  for (; patients < kCorrected; ++patients) Reports(patients);
  ASSERT_EQ(Runs("first", "update").status, 0);
  std::mt19937_64 random(1);
  int corrections = 0;
  std::ptrdiff_t listed = 0;
  const auto command = [this](const std::string& role) { return WrongEnding(Runs(role, role)); };
  Starts("update", command);
  Starts("killed", [&](const std::string& role) {
    return WrongEnding(Runs(role, "update", milliseconds(random() % 80)));
  });
  Starts("correct", [&](const std::string& role) {
    const std::string number = std::to_string(++corrections);
    const Outcome outcome = Runs(role, "correct " + std::to_string(kCorrected) + " " + number);
    std::istringstream stored(outcome.out);
    for (std::string patient; std::getline(stored, patient);) WriteFile(Note("stored " + patient), number);
    return WrongEnding(outcome);
  });
  Starts("list", [&](const std::string& role) {
    const Outcome outcome = Runs(role, "list --format csv");
    const auto lines = std::ranges::count(outcome.out, '\n');
    if (outcome.status == 0 && lines < listed) return std::string("rows vanished from the list");
    if (outcome.status == 0) listed = lines;
    return WrongEnding(outcome);
  });
  Starts("check", [this](const std::string& role) { return WrongCheck(Runs(role, role)); });
  Starts("compact", command);
  Starts("repair", [this](const std::string& role) { return WrongCheck(Runs(role, role)); });
  for (; steady_clock::now() < end_; ++patients) {
    Reports(patients);
    std::this_thread::sleep_for(milliseconds(3));
  }
  held_.close();
  for (test::Child& worker : workers_) worker.Wait();

  const Outcome last = Runs("last", "update");
  EXPECT_EQ(last.status, 0) << last.err;
  EXPECT_EQ(WrongInLog(suite_, {patients}), "");
  for (const auto& [name, text] : ReadFolder(suite_.suite().parent_path())) {
    if (name.ends_with(" wrong")) ADD_FAILURE() << name << ": " << text.substr(0, 2000);
    if (name.ends_with(" turns") || name.ends_with(" refused"))
      std::printf("%s: %s\n", name.c_str(), text.c_str());
  }
  std::printf("exposures: %d\n", patients);
  EXPECT_EQ(LostCorrections(), "");
}

}  // namespace
}  // namespace varnlog::faults
