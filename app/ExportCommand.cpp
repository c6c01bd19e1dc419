#include "app/ExportCommand.h"

#include <exception>
#include <optional>

#include "db/modCommon.h"
#include "exports/Export.h"
#include "exports/Separator.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/SaveFolder.h"
#include "ui/WaitWindow.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

class ShownProgress final : public exports::ExportProgress {
 public:
  ShownProgress(QWidget* parent, const core::TextLookup& texts) : window_(parent, texts, "dlgExporting") {}
  bool Exported(std::int64_t rowsDone, std::int64_t rows) override {
    return window_.Advance("EX_PROGRESS"_key, rowsDone, rows);
  }

 private:
  ui::WaitWindow window_;
};

std::optional<std::string> AskFile(QWidget* parent, const ExportContext& context,
                                   const std::string& headline) {
  ui::SaveFolder folder(context.ini, context.iniFile, "Export", "Folder");
  ui::CFileDialog dialog;
  dialog.SetDialogTitle(context.texts.GetText("EX_TITLE"_key));
  dialog.SetHelpTopic("EX_TITLE");
  dialog.SetFilter(context.texts.GetText("EX_FILTER"_key));
  dialog.SetDefaultExt("xlsx");
  dialog.SetInitDir(folder.Last());
  dialog.SetFileName(ui::FileNameFor(headline, ".xlsx"));
  auto file = dialog.ShowSave(parent);
  if (file) folder.Keep(db::FolderPart(*file));
  return file;
}

std::optional<std::int64_t> Write(QWidget* parent, const ExportContext& context, const ShownRows& shown,
                                  const std::string& file, exports::Format format) {
  const auto source = exports::MakeDisplayedRows(
      *shown.rows, {context.texts, context.scheme, context.shortDate}, shown.columns);
  ShownProgress progress(parent, context.texts);
  // What is shown was read before; whether it still holds, a server must be there to say.
  static_cast<void>(context.log.Stamp());
  // The file dialog has asked before it let an existing file be chosen.
  return exports::Export({.rows = *shown.rows,
                          .source = *source,
                          .texts = context.texts,
                          .site = context.site,
                          .selection = shown.headline,
                          .day = context.shortDate.Format(context.clock.Today())},
                         {.file = file,
                          .format = format,
                          .ifTaken = platform::IfTaken::kReplace,
                          .log = context.log.Name(),
                          .listSeparator = exports::ListSeparatorOf(context.ini, context.iniFile)},
                         progress);
}

}  // namespace

void ExportShown(QWidget* parent, const ExportContext& context, const ShownRows& shown) {
  const auto file = AskFile(parent, context, shown.headline);
  if (!file) return;
  const core::Messages messages(context.user, context.texts);
  const auto format = exports::FormatOf(*file);
  if (!format) return messages.Critical("EX_ERR_FORMAT"_key, {{"strFile", *file}});
  try {
    const auto written = Write(parent, context, shown, *file, *format);
    if (!written) return;
    messages.Inform("EX_DONE"_key, {{"lngCount", std::to_string(*written)}, {"strFile", *file}});
  } catch (const std::exception& error) {
    messages.ShowText(exports::ExportErrorText(context.texts, error));
  }
}

}  // namespace varnlog::app
