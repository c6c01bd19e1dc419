#include <filesystem>

#include "cli/documents/Documents.h"
#include "db/modCommon.h"
#include "logview/LaterEntries.h"
#include "logview/Selection.h"
#include "platform/Files.h"
#include "report/PdfReport.h"

namespace varnlog::cli {

namespace {

/// Rows are read twice, once for finding the pages and once for drawing them; drawing takes nearly all the
/// time, so that alone moves the bar.
class PageProgress final : public report::ReportProgress {
 public:
  explicit PageProgress(TerminalDialog& user) : user_(user) {}

  bool Counting(std::int64_t /*rowsDone*/, std::int64_t /*rows*/) override { return true; }
  bool Painting(int page, int pages) override {
    user_.SetRecordCount(pages * kRowsPerPage);
    user_.Advance(page * kRowsPerPage);
    return true;
  }

 private:
  static constexpr std::int64_t kRowsPerPage = 64;  // the bar moves no more often

  TerminalDialog& user_;
};

void SaveReport(Session& session, dao::Recordset& rows, const std::string& headline, const Options& options) {
  const report::DrawingWithoutDisplay drawing;
  PageProgress progress(session.user());
  report::ReportJob job =
      report::BeginReport(session.texts(), session.globals().SiteGl, headline, session.clock().Today(),
                          session.shortDate(), rows, report::ReadLogState(session.Log()));
  const start::HostToothScheme scheme(session.globals(), session.ini());
  if (options.withEntries) {
    const logview::LaterEntries entries(session.Log(), session.texts(), scheme, session.shortDate());
    job.withEntries = true;
    job.laterEntries = [entries](std::int64_t exposure, std::string_view type) {
      return entries.Of(exposure, type);
    };
  }
  if (!report::SaveReportAsPdf(
          job, {.file = options.output, .log = session.LogFile(), .language = session.globals().LanguageGl},
          progress))
    throw JobError("");
}

}  // namespace

void RunReportCommand(Session& session, const Options& options, Output& /*output*/) {
  SetSelection(session.globals(), options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  const auto selection = logview::BuildSelection(session.globals(), session.texts(), session.shortDate());
  const std::string sql =
      options.oldestFirst ? db::ReplaceSortClause(selection.sql, "ORDER BY TXray.tXrayTs;") : selection.sql;
  const auto rows = session.Log().OpenRecordset(sql);
  try {
    SaveReport(session, *rows, selection.headline, options);
  } catch (const dao::EngineError&) {
    throw;
  } catch (const std::exception& error) {
    session.FailWith(report::ReportErrorText(session.texts(), error));
  }
}

}  // namespace varnlog::cli
