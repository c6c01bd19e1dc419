#include "legacy/ConversionRun.h"

#include <utility>

#include "core/EngineMessages.h"
#include "core/LogCheck.h"
#include "core/Messages.h"
#include "legacy/OldFile.h"
#include "platform/SafeFile.h"
#include "platform/Sha256.h"
#include "seals/LogSeals.h"

namespace varnlog::legacy {

using namespace core::literals;
namespace fs = std::filesystem;
using Outcome = ConversionResult::Outcome;
using Verdict = LogExamination::Verdict;

namespace {

RowProgress ReportTo(ConversionView& view) {
  return [&view](std::int64_t done) { return view.Advance(done); };
}

// Layouts of other programs' versions hold what a new log could not.
bool IsKnownVersion(const LogExamination& found) {
  return found.version.empty() || found.version == core::kFirstVersion || found.version == core::kLogVersion;
}

std::string FirstFault(const LogExamination& found) {
  return found.faults.First().empty() ? std::string() : Describe(found.faults.First().front());
}

}  // namespace

ConversionRun::ConversionRun(const ConversionContext& context, fs::path oldLog, ConversionView& view)
    : context_(context), oldLog_(std::move(oldLog)), view_(view) {
  result_.keptFile = oldLog_;
}

ConversionRun::~ConversionRun() = default;

std::string ConversionRun::TextNaming(const fs::path& file, core::TextKey key) const {
  return core::FilledText(context_.texts, key, {{"strFile", platform::FromPath(file)}});
}

bool ConversionRun::FailToWrite(const dao::EngineError& failure) {
  return Fail(Text("CV_ERR_WRITE"_key, core::EngineErrorText(context_.texts, failure)));
}

std::string ConversionRun::Text(core::TextKey key, const std::string& error) const {
  const auto date = [](platform::DateTime when) { return when.IsSet() ? when.ToIso() : std::string(); };
  return core::FilledText(context_.texts, key,
                          {{"strFile", platform::FromPath(oldLog_)},
                           {"strOldFile", platform::FromPath(result_.keptFile)},
                           {"lngReadable", std::to_string(result_.found.exposures.read)},
                           {"lngCount", std::to_string(result_.found.exposures.declared)},
                           {"dFirst", date(result_.found.first)},
                           {"dLast", date(result_.found.last)},
                           {"strError", error}});
}

bool ConversionRun::End(Outcome outcome) {
  result_.outcome = outcome;
  return false;
}

bool ConversionRun::Fail(const std::string& text) {
  result_.error = text;
  core::Messages(view_, context_.texts).ShowText(text);
  return End(Outcome::kFailed);
}

bool ConversionRun::Cancel() {
  Tell(Text("CV_CANCELLED"_key));
  return End(Outcome::kCancelled);
}

void ConversionRun::Tell(const std::string& text) {
  core::Messages(view_, context_.texts).ShowText(text, core::MessageIcon::kInformation);
}

bool ConversionRun::Ask(const std::string& text) {
  const auto answer =
      core::Messages(view_, context_.texts)
          .ShowText(text, core::MessageIcon::kQuestion, core::MessageButtons::kYesNo, "CV_CAPTION"_key);
  return answer == core::MessageAnswer::kYes;
}

// A lock file of a program that crashed stays for ever: once the user has been told, only one that may really
// be open holds the conversion up.
bool ConversionRun::WaitForOthers() {
  for (auto lockFile = LockFileOf(oldLog_); lockFile; lockFile = LockFileOf(oldLog_)) {
    const auto answer = core::Messages(view_, context_.texts)
                            .ShowText(Text("CV_ERR_INUSE"_key), core::MessageIcon::kCritical,
                                      core::MessageButtons::kRetryCancel);
    if (answer != core::MessageAnswer::kRetry) {
      result_.error = Text("CV_ERR_INUSE"_key);
      return End(Outcome::kFailed);
    }
    if (!MayBeOpen(*lockFile)) break;
  }
  return true;
}

std::optional<ConversionRun::Stamp> ConversionRun::CurrentStamp() const {
  std::error_code error;
  Stamp stamp{fs::file_size(oldLog_, error), {}};
  if (!error) stamp.time = fs::last_write_time(oldLog_, error);
  return error ? std::nullopt : std::optional(stamp);
}

bool ConversionRun::IsUnchanged() const {
  return stamp_ && CurrentStamp() == stamp_;
}

bool ConversionRun::Examine() {
  view_.Begin(ConversionStep::kReading, 0);
  std::error_code error;
  stamp_ = CurrentStamp();
  auto content = ReadOldFile(oldLog_, error);
  if (!content) return Fail(Text("CV_ERR_UNREADABLE"_key, error.message()));
  content_ = std::move(*content);
  if (!IsJet(AsBytes(content_))) return End(Outcome::kNotNeeded);
  result_.origin = platform::Sha256Hex(content_);
  auto examined = legacy::Examine(AsBytes(content_), ReportTo(view_));
  if (!examined) return Cancel();
  result_.found = std::move(*examined);
  return IsConvertible();
}

bool ConversionRun::IsConvertible() {
  const LogExamination& found = result_.found;
  const bool isUnknown = found.verdict == Verdict::kForeign || found.faults.Has(FaultKind::kUnknownVersion);
  if (isUnknown || !IsKnownVersion(found)) return Fail(Text("CV_ERR_FORMAT"_key));
  const bool isLost = found.verdict == Verdict::kDamaged && found.exposures.read == 0;
  if (found.verdict == Verdict::kUnreadable || isLost) {
    return Fail(Text("CV_ERR_UNREADABLE"_key, FirstFault(found)));
  }
  return true;
}

bool ConversionRun::AgreeToLoss(DamagedLog damaged) {
  if (result_.found.verdict == Verdict::kSound || damaged == DamagedLog::kTakeReadable) return true;
  if (damaged == DamagedLog::kRefuse) {
    return Fail(Text("CV_ERR_DAMAGED"_key, FirstFault(result_.found)));
  }
  return Ask(Text("CV_DAMAGED"_key)) || End(Outcome::kDeclined);
}

// A workspace of its own, so that the program's transactions and open databases stay out of it.
std::shared_ptr<dao::Workspace> ConversionRun::OpenWorkspace() {
  return context_.engine.CreateWorkspace("ConvertWs", "Admin", "");
}

bool ConversionRun::Fill(const fs::path& growing, LogCopy& copy) {
  view_.Begin(ConversionStep::kTakingOver, static_cast<std::int64_t>(result_.found.exposures.read));
  const auto workspace = OpenWorkspace();
  const auto target = workspace->OpenDatabase(platform::FromPath(growing), true, false);
  // What an interrupted conversion leaves is never used; the whole is flushed when it is complete.
  target->ForgoSafety();
  workspace->BeginTrans();
  const bool isFilled = copy.Fill(*target, ReportTo(view_));
  if (isFilled) {
    seals::SealConverted(*target, context_.author, context_.clock);
    workspace->CommitTrans();
  } else {
    workspace->Rollback();
  }
  workspace->Close();
  result_.rows = copy.Rows();
  return isFilled || Cancel();
}

bool ConversionRun::ReadAgain() {
  std::error_code error;
  content_.clear();
  content_.shrink_to_fit();
  auto content = ReadOldFile(oldLog_, error);
  if (!content) return Fail(Text("CV_ERR_UNREADABLE"_key, error.message()));
  content_ = std::move(*content);
  // What changed in between shows in the comparison, or in the file's time before the exchange.
  return true;
}

bool ConversionRun::Compare(const fs::path& growing, LogCopy& copy) {
  view_.Begin(ConversionStep::kComparing, copy.Rows());
  const auto reread = OldLog::Open(AsBytes(content_));
  if (!reread) return Fail(Text("CV_ERR_COMPARE"_key, Describe(reread.Why())));
  const auto workspace = OpenWorkspace();
  const auto target = workspace->OpenDatabase(platform::FromPath(growing), true, true);
  const bool isCompared = copy.Compare(*reread, *target, ReportTo(view_));
  workspace->Close();
  result_.comparedValues = copy.ComparedValues();
  if (!isCompared) return Cancel();
  return copy.Difference().empty() || Fail(Text("CV_ERR_COMPARE"_key, copy.Difference()));
}

// Numbers that the old program gave out and did not use are no loss.
void ConversionRun::NoteUnusedIds(const fs::path& growing) {
  const auto workspace = OpenWorkspace();
  const auto target = workspace->OpenDatabase(platform::FromPath(growing), true, false);
  target->ForgoSafety();
  workspace->BeginTrans();
  core::NoteMissingExposures(*target, core::MissingExposures(*target));
  workspace->CommitTrans();
  workspace->Close();
}

bool ConversionRun::Finish(const fs::path& growing) {
  std::error_code error;
  auto file = platform::File::Open(growing, platform::File::Mode::kReadWrite, error);
  if (!error) file.Flush(error);
  return !error || Fail(Text("CV_ERR_WRITE"_key, error.message()));
}

bool ConversionRun::Build(const fs::path& growing) {
  std::error_code error = RemoveGrowing(growing);
  if (!error)
    error = platform::CopyWholeFile(context_.templateFile, growing, platform::IfTaken::kFail, oldLog_);
  if (error) return Fail(Text("CV_ERR_WRITE"_key, error.message()));
  try {
    const auto source = OldLog::Open(AsBytes(content_));
    if (!source) return Fail(Text("CV_ERR_UNREADABLE"_key, Describe(source.Why())));
    LogCopy copy(*source, result_.origin);
    if (!Fill(growing, copy) || !ReadAgain() || !Compare(growing, copy)) return false;
    NoteUnusedIds(growing);
  } catch (const dao::EngineError& failure) {
    if (failure.number() == dao::ErrorNumber::kCancelled) return Cancel();
    return FailToWrite(failure);
  }
  return Finish(growing);
}

}  // namespace varnlog::legacy
