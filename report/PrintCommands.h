#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QPageLayout>
#include <QWidget>

#include "core/Messages.h"
#include "core/SettingsStore.h"
#include "platform/Clock.h"
#include "platform/ShortDate.h"
#include "report/PaintedReport.h"
#include "report/PrintChoices.h"
#include "report/Printers.h"

namespace varnlog::report {

class frmPreview;

/// The rows of the log view's current selection, opened anew, and its headline.
struct PrintSource {
  std::unique_ptr<dao::Recordset> rows;
  std::string headline;
  std::optional<LogState> state = {};
  LaterEntriesOf laterEntries = {};
};

/// What the print commands work with; all of it outlives them.
struct PrintContext {
  const core::TextLookup& texts;
  core::UserDialog& user;
  const platform::Clock& clock;
  const platform::ShortDate& shortDate;
  /// Where printer, paper, pages and folder are kept from one start to the next.
  core::SettingsStore& ini;
  const std::string& iniFile;
  /// The practice's name, asked each time a report is begun.
  std::function<std::string()> site;
  /// The log's file.
  std::function<std::string()> log;
  /// The code of the user's language.
  std::function<std::string()> language;
  /// May throw dao::EngineError.
  std::function<PrintSource()> open;

  [[nodiscard]] core::Messages Messages() const { return {user, texts}; }
};

/// Sheets that are no report.
struct PaintedSheets {
  std::string title;
  std::function<int(const QPageLayout&)> count;
  /// False when the device could not be drawn on.
  std::function<bool(QPagedPaintDevice&, PageRange)> paint;
};

/// The print commands of the main window. What was chosen in a dialog is kept as long as this lives; printer,
/// paper, the numbers of the pages and the folder of PDF files also for the next start. Errors have been
/// shown to the user when a call returns.
class PrintCommands {
 public:
  explicit PrintCommands(PrintContext context, std::unique_ptr<Printers> printers = nullptr);
  ~PrintCommands();

  /// Asks for printer, copies and pages and prints the current selection.
  void Print(QWidget* parent);
  /// The preview of the current selection, to be shown by the caller, who owns it; nullptr when there is
  /// nothing to show. It uses these commands as long as it lives.
  [[nodiscard]] frmPreview* Preview(QWidget* parent);
  void PageSetup(QWidget* parent);

  /// Prints a report that is open already.
  void PrintReport(QWidget* parent, const ReportJob& job);
  /// Asks for printer, copies and pages and prints them.
  void PrintSheets(QWidget* parent, const PaintedSheets& sheets);
  /// Asks for a file and writes the report to it.
  void SaveReport(QWidget* parent, const ReportJob& job);
  /// The same of rows that are not those of the selection.
  void SaveRecord(QWidget* parent, const PrintSource& source);

  /// Whether what was entered later is printed as well; kept.
  void ChooseEntries(bool withEntries);

  /// The paper that reports are laid out for.
  [[nodiscard]] const QPageLayout& Page() const { return page_; }
  [[nodiscard]] const core::TextLookup& Texts() const { return context_.texts; }
  void ShowFailure(const std::string& text);

 private:
  [[nodiscard]] bool RequirePrinter();
  [[nodiscard]] ReportJob Begin(const PrintSource& source) const;
  [[nodiscard]] bool AskAndPrint(QWidget* parent, const ReportJob& job);
  [[nodiscard]] int PrintChosen(QWidget* parent, ReportJob job);
  [[nodiscard]] bool SaveTo(QWidget* parent, const ReportJob& job, const std::string& file);
  [[nodiscard]] std::string Kept(std::string_view key) const;
  void Keep(std::string_view key, std::string_view value);
  void LoadChoices();
  void KeepChoices();
  void SetUp(QPrinter& printer, const std::string& title) const;
  /// Runs `work` and shows what it throws.
  void Guard(const std::function<void()>& work);

  PrintContext context_;
  std::unique_ptr<Printers> printers_;
  PrintChoices choices_;
  QPageLayout page_;
};

}  // namespace varnlog::report
