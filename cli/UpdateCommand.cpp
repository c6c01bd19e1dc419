#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "db/dao/WarmUp.h"
#include "intake/UpdateRun.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

std::string Summary(const intake::UpdateResult& result) {
  return "read " + std::to_string(result.read) + ", added " + std::to_string(result.added) + ", changed " +
         std::to_string(result.changed) + ", skipped " + std::to_string(result.skipped) + "\n";
}

}  // namespace

void AddUpdateOptions(CLI::App& command, Options& options) {
  command.add_flag("--despite-clock", options.despiteClock,
                   "take exposures although the clock is more than a day behind the newest one in the log");
  command.add_flag("--other-log", options.otherLog,
                   "take the exposures into the log of --file although it is not this practice's log");
}

void RunUpdateCommand(Session& session, const Options& options, Output& output) {
  dao::WarmUp();
  core::Globals& globals = session.globals();
  if (!options.otherLog) session.RequireOwnLog();
  session.InstallDefaultLog();
  session.OpenLog(Session::Access::kWrite);
  if (globals.ReadOnlyGl) session.Fail("VC_ERR_READONLY"_key, {{"strFile", session.LogFile()}});

  const auto result = intake::RunUpdate({globals, session.texts(), session.clock()}, session.user(),
                                        {.despiteClock = options.despiteClock});
  session.user().Flush();
  using Outcome = intake::UpdateResult::Outcome;
  if (result.clockDoubted) session.Fail("VC_ERR_CLOCK"_key);
  if (result.outcome == Outcome::kCancelled) session.Fail("VC_ERR_CANCELLED"_key);
  if (result.outcome == Outcome::kFailed) throw JobError("");
  output.Write(Summary(result));
  // Said already. The next run would find these records again.
  if (result.leftInFile) throw JobError("");
}

}  // namespace varnlog::cli
