// A workstation without a window, for what varnlogctl does not do. The log is Varnlog.mdb in the current
// folder.
//   workstation --folder PROGRAM correct COUNT [NUMBER]   writes a comment to the first COUNT rows
//   workstation --folder PROGRAM enter NAME FIRST         enters the dose of open exposures from that one
//   on;
//                                                         says "stored PATIENT VALUE" or "first PATIENT WHO"
//   workstation --folder PROGRAM adopt                    converts an old log in its place
// A correction counts as acknowledged when the file "acknowledged" is looked for; the patient stands on the
// output then.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <thread>

#include "db/dao/DBEngine.h"
#include "legacy/Conversion.h"
#include "platform/Author.h"
#include "platform/Clock.h"
#include "platform/LibraryMemory.h"
#include "seals/History.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "tests/faults/Scenario.h"

namespace {

using namespace varnlog;
namespace fs = std::filesystem;

const char* const kLog = "Varnlog.mdb";
const char* const kEntered = "tXraySDose";

/// Texts are their keys, questions are answered with yes.
class Agreeing final : public legacy::ConversionView, public core::TextLookup {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    std::fprintf(stderr, "%s\n", message.text.c_str());
    return core::MessageAnswer::kYes;
  }
  void Beep() override {}
  void Begin(legacy::ConversionStep /*step*/, std::int64_t /*exposures*/) override {}
  [[nodiscard]] bool Advance(std::int64_t /*done*/) override { return true; }
  [[nodiscard]] std::string GetText(core::TextKey key) const override { return std::string(key.name()); }
};

int Adopt(dao::DBEngine& engine, const fs::path& program) {
  using Outcome = legacy::ConversionResult::Outcome;
  Agreeing user;
  const platform::SystemClock clock;
  const Outcome outcome =
      ConvertInPlace({engine, user, program / "varnlog.md0", platform::CurrentAuthor(), clock},
                     fs::current_path() / kLog, user)
          .outcome;
  return outcome == Outcome::kDone || outcome == Outcome::kNotNeeded ? 0 : 1;
}

void Correct(dao::DBEngine& engine, const std::string& count, const std::string& comment) {
  const auto workspace = engine.CreateWorkspace("Station", "Admin", "");
  const auto log = workspace->OpenDatabase(fs::current_path() / kLog, false, false);
  const platform::SystemClock clock;
  const auto ledger = std::make_shared<seals::Ledger>(platform::CurrentAuthor(), clock);
  static_cast<void>(seals::OpenLedger(*log, ledger));
  const auto rows = log->OpenRecordset("SELECT TXray.* FROM TXray WHERE tXrayCulIntIDPk <= " + count);
  for (; !rows->IsEOF(); rows->MoveNext()) {
    rows->Edit();
    rows->Fields("tXraySComment").SetText(comment);
    rows->Update();
    static_cast<void>(fs::exists(fs::current_path() / faults::kAcknowledged));
    std::printf("%s\n", std::string(rows->Fields("tXraySName").Text()).c_str());
    std::fflush(stdout);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // a quick user
  }
  log->Close();
}

std::string WhoWasFirst(dao::Database& log, std::int64_t exposure) {
  std::string who = "nobody";
  for (const seals::HistoryEntry& entry : seals::ReadHistory(log, exposure))
    if (entry.field == kEntered) who = entry.origin.account;
  return who;
}

// Nobody enters a value where he sees one; who saw none may still be the second.
bool Enters(dao::Recordset& rows, const std::string& value) {
  rows.Edit();
  try {
    if (!rows.Fields(kEntered).Text().empty()) throw dao::EngineError(dao::ErrorNumber::kDataChanged, "");
    rows.Fields(kEntered).SetText(value);
    rows.Update();
    return true;
  } catch (const dao::EngineError& error) {
    rows.CancelUpdate();
    if (error.number() != dao::ErrorNumber::kDataChanged) throw;
    return false;
  }
}

void Enter(dao::DBEngine& engine, const std::string& name, const std::string& first) {
  constexpr int kMostEntries = 40;
  constexpr std::chrono::seconds kLongest(10);  // others may make each one wait
  const auto end = std::chrono::steady_clock::now() + kLongest;
  const auto workspace = engine.CreateWorkspace("Station", "Admin", "");
  const auto log = workspace->OpenDatabase(fs::current_path() / kLog, false, false);
  const platform::SystemClock clock;
  const auto ledger =
      std::make_shared<seals::Ledger>(platform::Author{name, name, "desk of " + name, "test", name}, clock);
  static_cast<void>(seals::OpenLedger(*log, ledger));
  const auto rows = log->OpenRecordset("SELECT TXray.* FROM TXray WHERE tXrayCulIntIDPk >= " + first +
                                       " ORDER BY TXray.tXrayCulIntIDPk;");
  int entries = 0;
  for (; !rows->IsEOF() && entries < kMostEntries && std::chrono::steady_clock::now() < end;
       rows->MoveNext()) {
    const std::int64_t exposure = rows->Fields("tXrayCulIntIDPk").Number();
    if (!rows->Fields(kEntered).Text().empty()) continue;
    std::this_thread::sleep_for(std::chrono::milliseconds(3));  // while the value is typed
    const std::string value = name.substr(0, 1) + std::to_string(exposure % 10'000);
    const bool isStored = Enters(*rows, value);
    std::printf("%s %lld %s\n", isStored ? "stored" : "first", static_cast<long long>(exposure),
                isStored ? value.c_str() : WhoWasFirst(*log, exposure).c_str());
    std::fflush(stdout);
    ++entries;
  }
  log->Close();
}

}  // namespace

int main(int argc, char** argv) {
  std::set_new_handler([] {
    std::fputs("workstation: out of memory\n", stderr);
    std::_Exit(1);
  });
  varnlog::platform::GuardLibraryMemory();
  if (argc < 4) return 2;
  try {
    dao::DBEngine engine;
    engine.SetSystemDB(std::string(argv[2]) + "/system.mdw");
    if (argv[3] == std::string("adopt")) return Adopt(engine, argv[2]);
    if (argv[3] == std::string("enter")) {
      if (argc < 6) return 2;
      Enter(engine, argv[4], argv[5]);
      return 0;
    }
    Correct(engine, argv[4], std::string("corrected ") + (argc > 5 ? argv[5] : ""));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
