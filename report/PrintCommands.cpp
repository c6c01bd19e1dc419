#include "report/PrintCommands.h"

#include <algorithm>

#include "db/modCommon.h"
#include "report/PdfFile.h"
#include "report/ProgressWindow.h"
#include "report/ReportErrors.h"
#include "report/frmPreview.h"
#include "report/frmPrinter.h"
#include "report/frmPrinterSetup.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/SaveFolder.h"

namespace varnlog::report {

using core::literals::operator""_key;

namespace {

constexpr std::string_view kSection = "Printing";

/// A stopped job has to be taken back before it is finished. Printing systems that cannot do that print the
/// pages drawn so far.
class AbortingProgress final : public ReportProgress {
 public:
  AbortingProgress(ReportProgress& progress, QPrinter& printer) : progress_(progress), printer_(printer) {}

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override {
    return progress_.Counting(rowsDone, rows);
  }
  bool Painting(int page, int pages) override {
    if (progress_.Painting(page, pages)) return true;
    printer_.abort();
    return false;
  }

 private:
  ReportProgress& progress_;
  QPrinter& printer_;
};

}  // namespace

PrintCommands::PrintCommands(PrintContext context, std::unique_ptr<Printers> printers)
    : context_(std::move(context)),
      printers_(printers ? std::move(printers) : std::make_unique<SystemPrinters>()),
      page_(DefaultPageLayout(StoredDesign())) {
  LoadChoices();
}

PrintCommands::~PrintCommands() = default;

void PrintCommands::Guard(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& error) {
    ShowFailure(ReportErrorText(context_.texts, error));
  }
}

void PrintCommands::ShowFailure(const std::string& text) {
  context_.Messages().ShowText(text);
}

bool PrintCommands::RequirePrinter() {
  if (!printers_->Names().empty()) return true;
  context_.Messages().Critical("MN_ERR_NOPRINTER"_key);
  return false;
}

ReportJob PrintCommands::Begin(const PrintSource& source) const {
  ReportJob job = BeginReport(context_.texts, context_.site(), source.headline, context_.clock.Today(),
                              context_.shortDate, *source.rows, source.state);
  job.laterEntries = source.laterEntries;
  job.withEntries = choices_.withEntries;
  return job;
}

void PrintCommands::ChooseEntries(bool withEntries) {
  choices_.withEntries = withEntries;
  KeepChoices();
}

void PrintCommands::Print(QWidget* parent) {
  if (!RequirePrinter()) return;
  Guard([this, parent] {
    const PrintSource source = context_.open();
    PrintReport(parent, Begin(source));
  });
}

frmPreview* PrintCommands::Preview(QWidget* parent) {
  std::unique_ptr<frmPreview> preview;
  Guard([&] {
    PrintSource source = context_.open();
    ReportJob job = Begin(source);
    auto window = std::make_unique<frmPreview>(*this, std::move(source.rows), std::move(job), parent);
    if (window->Paginate()) preview = std::move(window);
  });
  return preview.release();
}

void PrintCommands::PageSetup(QWidget* parent) {
  if (!RequirePrinter()) return;
  frmPrinterSetup dialog(parent, *printers_, context_.texts, ui::ToQString(choices_.printer),
                         page_.pageSize());
  if (dialog.exec() != QDialog::Accepted) return;
  choices_.printer = ui::FromQString(dialog.Printer());
  page_.setPageSize(dialog.Paper());
  KeepChoices();
}

void PrintCommands::PrintReport(QWidget* parent, const ReportJob& job) {
  if (!RequirePrinter()) return;
  Guard([&] {
    while (!AskAndPrint(parent, job)) {
    }
  });
}

/// False when the pages asked for do not exist and the user is to be asked again.
bool PrintCommands::AskAndPrint(QWidget* parent, const ReportJob& job) {
  if (frmPrinter(parent, *printers_, context_.texts, choices_).exec() != QDialog::Accepted) return true;
  KeepChoices();
  const int missing = PrintChosen(parent, job);
  if (missing == 0) return true;
  context_.Messages().Inform("DRS_ERR_RANGE"_key, {{"lngPages", std::to_string(missing)}});
  return false;
}

/// Prints what was chosen, or returns the number of pages there are when none of those asked for is among
/// them.
int PrintCommands::PrintChosen(QWidget* parent, ReportJob job) {
  job.withEntries = choices_.withEntries;
  const auto printer = printers_->Open(ui::ToQString(choices_.printer));
  printer->setCreator(ui::ToQString(*job.report.Caption("txtProduct")));
  SetUp(*printer, job.report.Title());
  ProgressWindow progress(parent, context_.texts, "DRS_PRINTING"_key);
  PaintedReport report(job, printer->pageLayout());
  if (!report.Paginate(progress)) return 0;
  const PageRange range = ChosenRange(choices_);
  if (!HasPages(range, report.PageCount())) return report.PageCount();
  // A printer that cannot count copies gets one job for each.
  AbortingProgress aborting(progress, *printer);
  const int jobs = printer->supportsMultipleCopies() ? 1 : choices_.copies;
  for (int i = 0; i < jobs; ++i) {
    if (!report.Paint(*printer, range, aborting)) break;
  }
  return 0;
}

void PrintCommands::PrintSheets(QWidget* parent, const PaintedSheets& sheets) {
  if (!RequirePrinter()) return;
  PrintChoices choices = choices_;
  choices.allPages = true;
  for (;;) {
    frmPrinter dialog(parent, *printers_, context_.texts, choices);
    dialog.OfferEntries(false);
    if (dialog.exec() != QDialog::Accepted) return;
    choices_.printer = choices.printer;
    KeepChoices();
    const auto printer = printers_->Open(ui::ToQString(choices.printer));
    SetUp(*printer, sheets.title);
    const int count = sheets.count(printer->pageLayout());
    if (!HasPages(ChosenRange(choices), count)) {
      context_.Messages().Inform("DRS_ERR_RANGE"_key, {{"lngPages", std::to_string(count)}});
      continue;
    }
    const int jobs = printer->supportsMultipleCopies() ? 1 : choices.copies;
    for (int i = 0; i < jobs && sheets.paint(*printer, ChosenRange(choices)); ++i) {
    }
    return;
  }
}

void PrintCommands::SetUp(QPrinter& printer, const std::string& title) const {
  printer.setDocName(ui::ToQString(title));
  // A printer that cannot print so near to the edge keeps its own margins.
  if (!printer.setPageLayout(page_)) {
    printer.setPageSize(page_.pageSize());
    printer.setPageOrientation(page_.orientation());
  }
  if (!printer.supportsMultipleCopies()) return;
  printer.setCopyCount(choices_.copies);
  printer.setCollateCopies(choices_.collate);
}

void PrintCommands::SaveReport(QWidget* parent, const ReportJob& job) {
  ui::CFileDialog dialog;
  dialog.SetDialogTitle(context_.texts.GetText("DRS_SAVEPDF_TITLE"_key));
  dialog.SetHelpTopic("DRS_SAVEPDF_TITLE");
  dialog.SetFilter(context_.texts.GetText("DRS_PDFFILTER"_key));
  dialog.SetDefaultExt("pdf");
  ui::SaveFolder folder(context_.ini, context_.iniFile, kSection, "PdfFolder");
  dialog.SetInitDir(folder.Last());
  dialog.SetFileName(ui::FileNameFor(job.report.Title(), ".pdf"));
  const auto file = dialog.ShowSave(parent);
  if (!file) return;
  folder.Keep(db::FolderPart(*file));
  Guard([&] {
    if (!SaveTo(parent, job, *file)) return;
    context_.Messages().Inform("DRS_SAVED"_key, {{"strFile", *file}});
  });
}

void PrintCommands::SaveRecord(QWidget* parent, const PrintSource& source) {
  Guard([&] { SaveReport(parent, Begin(source)); });
}

/// False when the user stopped it.
bool PrintCommands::SaveTo(QWidget* parent, const ReportJob& job, const std::string& file) {
  ProgressWindow progress(parent, context_.texts, "DRS_SAVING"_key);
  return SavePdf(job, page_, {.file = file, .log = context_.log(), .language = context_.language()},
                 progress);
}

std::string PrintCommands::Kept(std::string_view key) const {
  return context_.ini.ReadString(kSection, key, context_.iniFile);
}

void PrintCommands::Keep(std::string_view key, std::string_view value) {
  context_.ini.WriteString(kSection, key, value, context_.iniFile);
}

void PrintCommands::LoadChoices() {
  choices_.printer = Kept("Printer");
  const auto page = [this](std::string_view key) {
    return std::max<int>(context_.ini.ReadInteger(kSection, key, context_.iniFile), 1);
  };
  choices_.from = page("PageFrom");
  choices_.to = page("PageTo");
  choices_.withEntries = Kept("WithEntries") == "1";
  for (int id = 0; id <= QPageSize::LastPageSize; ++id) {
    const QPageSize paper{static_cast<QPageSize::PageSizeId>(id)};
    if (paper.isValid() && paper.key() == ui::ToQString(Kept("Paper"))) page_.setPageSize(paper);
  }
}

void PrintCommands::KeepChoices() {
  Keep("Printer", choices_.printer);
  Keep("PageFrom", std::to_string(choices_.from));
  Keep("PageTo", std::to_string(choices_.to));
  Keep("WithEntries", choices_.withEntries ? "1" : "0");
  // A paper that only one printer knows has no name that another start would understand.
  if (page_.pageSize().id() != QPageSize::Custom) Keep("Paper", ui::FromQString(page_.pageSize().key()));
}

}  // namespace varnlog::report
