#include "cli/documents/Documents.h"
#include "db/modCommon.h"
#include "exports/Export.h"
#include "exports/Separator.h"
#include "logview/Selection.h"

namespace varnlog::cli {

using namespace core::literals;

namespace {

class BarProgress final : public exports::ExportProgress {
 public:
  explicit BarProgress(TerminalDialog& user) : user_(user) {}
  bool Exported(std::int64_t rowsDone, std::int64_t rows) override {
    user_.SetRecordCount(rows);
    user_.Advance(rowsDone);
    return true;
  }

 private:
  TerminalDialog& user_;
};

void WriteFile(Session& session, dao::Recordset& rows, const std::string& headline,
               const exports::ExportTarget& target) {
  const start::HostToothScheme scheme(session.globals(), session.ini());
  const auto source =
      exports::MakeDisplayedRows(rows, {session.texts(), scheme, session.shortDate()}, exports::AllColumns());
  BarProgress progress(session.user());
  (void)exports::Export({.rows = rows,
                         .source = *source,
                         .texts = session.texts(),
                         .site = session.globals().SiteGl,
                         .selection = headline,
                         .day = session.shortDate().Format(session.clock().Today())},
                        target, progress);
}

}  // namespace

void ValidateExport(const Options& options) {
  ValidateSelection(options);
  if (!exports::FormatOf(options.output)) throw UsageError("EX_ERR_FORMAT"_key, "strFile", options.output);
}

void RunExportCommand(Session& session, const Options& options, Output& /*output*/) {
  SetSelection(session.globals(), options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  if (!options.overwrite && db::FileExists(options.output)) {
    session.Fail("VC_ERR_TAKEN"_key, {{"strFile", options.output}});
  }
  const auto selection = logview::BuildSelection(session.globals(), session.texts(), session.shortDate());
  const auto rows = session.Log().OpenRecordset(selection.sql);
  try {
    WriteFile(session, *rows, selection.headline,
              {.file = options.output,
               .format = *exports::FormatOf(options.output),
               .ifTaken = options.overwrite ? platform::IfTaken::kReplace : platform::IfTaken::kFail,
               .log = session.LogFile(),
               .listSeparator = exports::ListSeparatorOf(session.ini(), session.globals().IniFileGl)});
  } catch (const exports::ExportError& error) {
    session.FailWith(exports::ExportErrorText(session.texts(), error));
  }
}

}  // namespace varnlog::cli
