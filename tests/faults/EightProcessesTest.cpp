#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>
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

/// Seconds that the tests last.
int Duration() {
  const char* const given = std::getenv("VARNLOG_SECONDS");
  return given != nullptr ? std::atoi(given) : IsLong() ? 300 : 8;
}

/// A practice in which everybody works on one log at once: the suite reports, two workstations update (one is
/// killed now and then), one corrects, others list, check, compact and repair.
class EightProcessesTest : public testing::Test {
 protected:
  /// One of the eight: repeats `turn` until the time is over. Each turn says what was wrong with it.
  void Starts(const std::string& role, const std::function<std::string(const std::string& role)>& turn) {
    workers_.emplace_back([&] {
      int turns = 0;
      done_ = 0;
      for (; !IsOver(); ++turns) {
        const std::string wrong = turn(role);
        if (!wrong.empty()) AppendFile(Note(role + " wrong"), wrong + "\n");
      }
      WriteFile(Note(role + " turns"), std::to_string(turns) + ", done " + std::to_string(done_));
      return 0;
    });
  }
  /// On a busy machine one of them may have had no turn yet without which the rest says nothing.
  [[nodiscard]] bool IsOver() const {
    constexpr std::chrono::seconds kLongest(60);
    const auto now = steady_clock::now();
    return now >= end_ + kLongest || (now >= end_ && isEnough_());
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
    std::array<char, 16> date{};
    std::snprintf(date.data(), date.size(), "%02d.%02d.2004", 1 + patients / 500 % 28,
                  3 + patients / 14'000 % 10);
    std::array<char, 16> time{};
    std::snprintf(time.data(), time.size(), "%02d:%02d:%02d", patients / 3600 % 24, patients / 60 % 60,
                  patients % 60);
    tools::Exposure exposure =
        cli::NewExposure("Patient " + std::to_string(patients), "XI", date.data(), time.data());
    exposure.dose.clear();  // open to be entered
    tools::AppendRecord(exposure, oem, record);
    constexpr int kHeldFor = 25;
    if (patients % kHeldFor == 0) held_.close();
    if (patients % (8 * kHeldFor) == 0) held_.open(suite_.exchangeFile(), std::ios::binary | std::ios::app);
    if (held_.is_open()) {
      held_ << record << std::flush;
    } else {
      AppendFile(suite_.exchangeFile(), record);
    }
  }

  void TellsHowItWas(int patients) const {
    for (const auto& [name, text] : ReadFolder(suite_.suite().parent_path())) {
      if (name.ends_with(" wrong")) ADD_FAILURE() << name << ": " << text.substr(0, 2000);
      if (name.ends_with(" turns") || name.ends_with(" refused"))
        std::printf("%s: %s\n", name.c_str(), text.substr(0, 2000).c_str());
    }
    std::printf("exposures: %d\n", patients);
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
  steady_clock::time_point end_ = steady_clock::now() + std::chrono::seconds(Duration());
  std::function<bool()> isEnough_;  // asked in each process
  std::deque<test::Child> workers_;
  int done_ = 0;  // runs of this process that ended with status 0
  std::ofstream held_;
};

/// Nobody's entry was overwritten, and everybody who came second was told who was first.
class Entries {
 public:
  void Take(const std::string& said) {
    std::istringstream lines(said);
    std::string what;
    std::int64_t exposure = 0;
    std::string whatIsThere;
    while (lines >> what >> exposure >> whatIsThere)
      (what == "stored" ? stored_ : refused_).emplace(exposure, whatIsThere);
  }
  [[nodiscard]] std::string WrongIn(dao::Database& log) const {
    std::string wrong;
    std::map<std::int64_t, std::string> there;
    const auto rows = log.OpenRecordset("SELECT TXray.* FROM TXray");
    for (; !rows->IsEOF(); rows->MoveNext())
      there[rows->Fields("tXrayCulIntIDPk").Number()] = rows->Fields("tXraySDose").Text();
    for (const auto& [exposure, value] : stored_)
      if (there[exposure] != value)
        wrong += std::to_string(exposure) + ": " + value + " was stored, " + there[exposure] + " is there; ";
    for (const auto& [exposure, who] : refused_)
      if (there[exposure].empty() || there[exposure].front() != who.front())
        wrong += std::to_string(exposure) + ": " + who + " is said to be first, " + there[exposure] + " is; ";
    return wrong;
  }
  [[nodiscard]] std::size_t Stored() const { return stored_.size(); }
  [[nodiscard]] std::size_t Refused() const { return refused_.size(); }

 private:
  std::multimap<std::int64_t, std::string> stored_;
  std::multimap<std::int64_t, std::string> refused_;
};

std::string WrongCheck(const Outcome& outcome) {
  // Somebody else's exclusive use is said on the error output; what is wrong with the log is the output.
  return outcome.status == 1 && !outcome.out.empty() ? "check says " + outcome.out : WrongEnding(outcome);
}

// The suite, two updates, three who enter the same values, one who prints, one who verifies.
TEST_F(EightProcessesTest, NobodysEntryIsLostAndTheSecondIsToldWhoWasFirst) {
  int patients = 0;
  for (; patients < kCorrected; ++patients) Reports(patients);
  ASSERT_EQ(Runs("first", "update").status, 0);
  const auto update = [this](const std::string& role) { return WrongEnding(Runs(role, "update")); };
  isEnough_ = [this] { return ReadFile(Note("Anna said")).find("stored") != std::string::npos; };
  Starts("one", update);
  Starts("two", update);
  std::int64_t next = 1;
  for (const char* name : {"Anna", "Berta", "Clara"})
    Starts(name, [&next, this](const std::string& role) {
      const Outcome outcome = Runs(role, "enter " + role + " " + std::to_string(next));
      AppendFile(Note(role + " said"), outcome.out);
      std::istringstream words(outcome.out);
      for (std::string word; words >> word;)
        if (word == "stored" || word == "first") words >> next;
      return WrongEnding(outcome);
    });
  Starts("print", [this](const std::string& role) {
    return WrongEnding(Runs(role, "report --from 2004-03-01 --to 2004-03-01 --output report.pdf"));
  });
  Starts("verify", [this](const std::string& role) { return WrongCheck(Runs(role, role)); });
  for (; !IsOver(); ++patients) {
    Reports(patients);
    std::this_thread::sleep_for(milliseconds(15));
  }
  held_.close();
  for (test::Child& worker : workers_) worker.Wait();

  EXPECT_EQ(Runs("last", "update").status, 0);
  Entries entries;
  for (const char* name : {"Anna", "Berta", "Clara"})
    entries.Take(ReadFile(Note(std::string(name) + " said")));
  suite_.WithLog(false, [&entries](dao::Database& log) { EXPECT_EQ(entries.WrongIn(log), ""); });
  EXPECT_GT(entries.Stored(), 0U);
  EXPECT_EQ(WrongInLog(suite_, {patients}), "");
  TellsHowItWas(patients);
  std::printf("entered: %zu, too late: %zu\n", entries.Stored(), entries.Refused());
}

TEST_F(EightProcessesTest, LoseAndDoubleNothing) {
  int patients = 0;
  for (; patients < kCorrected; ++patients) Reports(patients);
  ASSERT_EQ(Runs("first", "update").status, 0);
  std::mt19937_64 random(1);
  int corrections = 0;
  std::ptrdiff_t listed = 0;
  const auto command = [this](const std::string& role) { return WrongEnding(Runs(role, role)); };
  isEnough_ = [this] { return std::filesystem::exists(Note("stored Patient 0")); };
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
  for (; !IsOver(); ++patients) {
    Reports(patients);
    std::this_thread::sleep_for(milliseconds(3));
  }
  held_.close();
  for (test::Child& worker : workers_) worker.Wait();

  const Outcome last = Runs("last", "update");
  EXPECT_EQ(last.status, 0) << last.err;
  EXPECT_EQ(WrongInLog(suite_, {patients}), "");
  TellsHowItWas(patients);
  EXPECT_EQ(LostCorrections(), "");
}

}  // namespace
}  // namespace varnlog::faults
