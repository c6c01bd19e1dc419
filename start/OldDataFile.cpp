#include "start/OldDataFile.h"

#include <system_error>

#include "core/Installation.h"
#include "legacy/ChangePlaces.h"
#include "legacy/LogExamination.h"
#include "legacy/OldFile.h"
#include "platform/Files.h"

namespace varnlog::start {

namespace {

using namespace core::literals;
using legacy::ConversionResult;
using legacy::LogExamination;

// What a damaged log still holds can only be taken over where a new file can be made. Everything else that is
// wrong with a file the engine tells when it opens it.
OpenAs PrepareProtected(const Services& services, const std::string& file) {
  std::error_code error;
  const auto content = legacy::ReadOldFile(platform::ToPath(file), error);
  if (!content) return OpenAs::kOldLog;
  const LogExamination found = legacy::Examine(legacy::AsBytes(*content));
  if (found.verdict != LogExamination::Verdict::kDamaged) return OpenAs::kOldLog;
  services.Messages().Critical("CV_ERR_PROTECTED"_key,
                               {{"strFile", file},
                                {"lngReadable", std::to_string(found.exposures.read)},
                                {"lngCount", std::to_string(found.exposures.declared)}});
  return OpenAs::kNothing;
}

}  // namespace

OpenAs PrepareDataFile(const core::Globals& globals, const Services& services, const std::string& file,
                       const ShowConversion& show) {
  const std::filesystem::path log = platform::ToPath(file);
  if (!legacy::IsJetFile(log)) return OpenAs::kLog;
  if (!legacy::CanBeReplaced(log)) return PrepareProtected(services, file);
  const legacy::ConversionContext context{dao::DBEngine::Instance(), services.texts,
                                          platform::ToPath(core::DeliveredFile(globals, core::kEmptyLog)),
                                          globals.AuthorGl, services.clock};
  using Outcome = ConversionResult::Outcome;
  Outcome outcome = Outcome::kCancelled;
  show([&](legacy::ConversionView& view) { outcome = ConvertInPlace(context, log, view).outcome; });
  const bool isNew = outcome == Outcome::kDone || outcome == Outcome::kNotNeeded;
  return isNew ? OpenAs::kLog : OpenAs::kNothing;
}

void TellOldLogIsProtected(const Services& services, const std::string& file) {
  services.Messages().Inform("CV_READONLY"_key, {{"strFile", file}});
}

}  // namespace varnlog::start
