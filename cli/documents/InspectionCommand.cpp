#include <filesystem>

#include "cli/documents/Documents.h"
#include "core/Installation.h"
#include "exports/Separator.h"
#include "inspection/InspectionFolder.h"
#include "platform/Files.h"
#include "report/PdfReport.h"
#include "statistics/ReferenceLevels.h"

namespace varnlog::cli {

namespace {

class BarProgress final : public inspection::InspectionProgress {
 public:
  explicit BarProgress(TerminalDialog& user) : user_(user) {}
  bool Working(core::TextKey /*what*/, std::int64_t done, std::int64_t all) override {
    if (all <= 0) return true;
    user_.SetRecordCount(all);
    user_.Advance(done);
    return true;
  }

 private:
  TerminalDialog& user_;
};

}  // namespace

void RunInspectionCommand(Session& session, const Options& options, Output& output) {
  core::Selection period;
  SetSelection(period, options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  const report::DrawingWithoutDisplay drawing;
  const start::HostToothScheme scheme(session.globals(), session.ini());
  BarProgress progress(session.user());
  try {
    const auto made = inspection::MakeInspectionFolder(
        {.log = session.Log(),
         .logFile = session.LogFile(),
         .texts = session.texts(),
         .scheme = scheme,
         .shortDate = session.shortDate(),
         .clock = session.clock(),
         .site = session.globals().SiteGl,
         .language = session.globals().LanguageGl,
         .levels = core::DeliveredFile(session.globals(), statistics::kReferenceLevels),
         .listSeparator = exports::ListSeparatorOf(session.ini(), session.globals().IniFileGl)},
        {.from = period.dBegGl,
         .to = period.dEndGl,
         .patients = options.patients,
         .profile =
             options.withComments ? inspection::Profile::kQualityBody : inspection::Profile::kAuthority,
         .oldestFirst = options.oldestFirst,
         .parent = platform::ToPath(options.output)},
        progress);
    session.user().Flush();
    output.Write(platform::FromPath(made->folder) + "\n" + platform::FromPath(made->archive) + "\n");
  } catch (const dao::EngineError&) {
    throw;
  } catch (const std::exception& error) {
    session.FailWith(inspection::InspectionErrorText(session.texts(), error));
  }
}

}  // namespace varnlog::cli
