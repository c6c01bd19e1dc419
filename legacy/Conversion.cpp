#include "legacy/Conversion.h"

#include <system_error>

#include "legacy/ChangePlaces.h"
#include "legacy/ConversionRun.h"
#include "legacy/OldFile.h"
#include "legacy/Turn.h"
#include "platform/SafeFile.h"

namespace varnlog::legacy {

using namespace core::literals;
namespace fs = std::filesystem;
using Outcome = ConversionResult::Outcome;

namespace {

// Removes the new log unless it has got its final name.
class GrowingFile {
 public:
  explicit GrowingFile(fs::path path) : path_(std::move(path)) {}
  ~GrowingFile() { static_cast<void>(RemoveGrowing(path_)); }
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  [[nodiscard]] const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

fs::path Resolved(const fs::path& path) {
  std::error_code error;
  fs::path resolved = fs::canonical(path, error);
  return error ? fs::absolute(path) : resolved;
}

bool AgreesToConversion(ConversionRun& run) {
  if (run.Result().found.verdict == LogExamination::Verdict::kDamaged)
    return run.AgreeToLoss(DamagedLog::kAsk);
  return run.Ask(run.Text("CV_ASK"_key)) || run.End(Outcome::kDeclined);
}

void TellOfLostProtection(ConversionRun& run) {
  const LogExamination& found = run.Result().found;
  if (found.hasPassword) run.Tell(run.Text("CV_PASSWORD"_key));
  if (found.isEncoded) run.Tell(run.Text("CV_ENCODED"_key));
}

void TellOfSuccess(ConversionRun& run) {
  const bool isSound = run.Result().found.verdict == LogExamination::Verdict::kSound;
  run.Tell(run.Text(isSound ? "CV_DONE"_key : "CV_DAMAGED_DONE"_key));
  TellOfLostProtection(run);
}

// What an earlier file of that name left of a transaction would be applied to the new log.
bool PutJournalAside(ConversionRun& run, const fs::path& log) {
  try {
    dao::DBEngine::PutJournalAside(platform::FromPath(log));
    return true;
  } catch (const dao::EngineError& failure) {
    return run.FailToWrite(failure);
  }
}

bool Swap(ConversionRun& run, const ConversionPaths& paths) {
  const auto lockFile = LockFileOf(paths.log);
  if (lockFile && MayBeOpen(*lockFile) && !run.WaitForOthers()) return false;
  if (!run.IsUnchanged()) return run.Fail(run.Text("CV_ERR_INUSE"_key));
  if (!PutJournalAside(run, paths.log)) return false;
  const std::error_code error = ChangePlaces(paths);
  return !error || run.Fail(run.Text("CV_ERR_WRITE"_key, error.message()));
}

bool RunInPlace(ConversionRun& run, const ConversionPaths& paths) {
  if (!run.WaitForOthers() || !run.Examine()) return false;
  run.Result().keptFile = paths.kept;
  if (!AgreesToConversion(run)) return false;
  if (!IsKeptNameUsable(paths, run.Result().origin)) {
    return run.Fail(run.TextNaming(paths.kept, "CV_ERR_EXISTS"_key));
  }
  const GrowingFile growing(paths.growing);
  return run.Build(growing.Path()) && Swap(run, paths);
}

// A log that is to be replaced must not be in use, and a change that was interrupted must be undone before:
// what is noted for that beside the file would be applied to the new one.
bool SettleReplaced(ConversionRun& run, const ConversionContext& context, const fs::path& newLog) {
  std::error_code error;
  if (!fs::exists(newLog, error)) return true;
  try {
    const auto workspace = context.engine.CreateWorkspace("ReplaceWs", "Admin", "");
    static_cast<void>(workspace->OpenDatabase(platform::FromPath(newLog), true, false));
    return true;
  } catch (const dao::EngineError& failure) {
    if (failure.number() == dao::ErrorNumber::kUnrecognisedFormat) return true;
    return run.FailToWrite(failure);
  }
}

// What is replaced may be the only record of a year: it keeps a name of its own.
std::error_code TakeName(ConversionRun& run, const fs::path& made, const fs::path& newLog, bool overwrite) {
  std::error_code error;
  if (!overwrite || !fs::exists(newLog, error)) {
    return platform::RenameFile(made, newLog, platform::IfTaken::kFail);
  }
  const auto kept = platform::KeepAside(newLog, ".replaced", platform::Keep::kSecondName, error);
  if (!kept) return error;
  error = platform::RenameFile(made, newLog, platform::IfTaken::kReplace);
  if (!error) {
    run.Result().replacedFile = *kept;
  } else {
    static_cast<void>(platform::RemoveFile(*kept));
  }
  return error;
}

bool RunTo(ConversionRun& run, const ConversionContext& context, const fs::path& newLog,
           const ConversionChoices& choices) {
  if (!run.WaitForOthers() || !run.Examine() || !run.AgreeToLoss(choices.damaged)) return false;
  const GrowingFile growing(fs::path(newLog) += ".converting");
  if (!run.Build(growing.Path())) return false;
  if (!run.IsUnchanged()) return run.Fail(run.Text("CV_ERR_INUSE"_key));
  if (!SettleReplaced(run, context, newLog) || !PutJournalAside(run, newLog)) return false;
  const std::error_code error = TakeName(run, growing.Path(), newLog, choices.overwrite);
  return !error || run.Fail(run.Text("CV_ERR_WRITE"_key, error.message()));
}

}  // namespace

ConversionResult ConvertInPlace(const ConversionContext& context, const fs::path& log, ConversionView& view) {
  const ConversionPaths paths = ConversionPaths::For(Resolved(log));
  ConversionRun run(context, paths.log, view);
  const Turn turn(paths.log);
  if (!turn.IsMine()) {
    static_cast<void>(run.Fail(run.Text("CV_ERR_INUSE"_key)));
  } else if (RunInPlace(run, paths)) {
    run.Result().outcome = Outcome::kDone;
    TellOfSuccess(run);
  }
  return run.Result();
}

ConversionResult ConvertTo(const ConversionContext& context, const fs::path& oldLog, const fs::path& newLog,
                           const ConversionChoices& choices, ConversionView& view) {
  ConversionRun run(context, Resolved(oldLog), view);
  std::error_code error;
  const bool isTaken =
      fs::exists(newLog, error) && (!choices.overwrite || platform::SameFile(oldLog, newLog));
  if (isTaken) {
    static_cast<void>(run.Fail(run.TextNaming(newLog, "CV_ERR_EXISTS"_key)));
  } else if (RunTo(run, context, Resolved(newLog), choices)) {
    run.Result().outcome = Outcome::kDone;
    const bool isSound = run.Result().found.verdict == LogExamination::Verdict::kSound;
    if (!isSound) run.Tell(run.Text("CV_DAMAGED_DONE"_key));
    TellOfLostProtection(run);
  }
  return run.Result();
}

}  // namespace varnlog::legacy
