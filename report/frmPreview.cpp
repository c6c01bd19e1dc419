#include "report/frmPreview.h"

#include <algorithm>
#include <cstdlib>

#include <QGraphicsView>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "report/ProgressWindow.h"
#include "report/ReportErrors.h"
#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::report {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kZooms[] = {50, 75, 100, 125, 150, 200, 300, 400};
constexpr double kZoomStep = 1.25;
constexpr int kWheelNotch = 120;

}  // namespace

frmPreview::frmPreview(PrintCommands& commands, std::unique_ptr<dao::Recordset> rows, ReportJob job,
                       QWidget* parent)
    : QWidget(parent),
      commands_(commands),
      rows_(std::move(rows)),
      job_(std::move(job)),
      paper_(QPrinter::HighResolution),
      report_(std::make_unique<PaintedReport>(job_, commands.Page())),
      toolbar_(new QToolBar),
      view_(nullptr) {
  setObjectName("frmPreview");
  setWindowTitle(Caption(commands.Texts(), "MN_PRINTPREVIEW"_key));
  setWindowIcon(ui::ThemedIcon(QStringLiteral("Preview")));
  // A file as the device: the preview must not wait for a printer.
  paper_.setOutputFormat(QPrinter::PdfFormat);
  paper_.setPageLayout(commands.Page());
  view_ = new QPrintPreviewWidget(&paper_);
  view_->setObjectName("CRViewer");
  connect(view_, &QPrintPreviewWidget::paintRequested, this, &frmPreview::PaintCurrentPage);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(toolbar_);
  layout->addWidget(view_, 1);
}

frmPreview::~frmPreview() = default;

bool frmPreview::Paginate() {
  ProgressWindow progress(parentWidget(), commands_.Texts(), "DRS_PRINTING"_key);
  if (!report_->Paginate(progress)) return false;
  BuildToolbar();
  // The keys turn pages from the start.
  setFocusProxy(view_->findChild<QGraphicsView*>());
  view_->fitToWidth();
  view_->findChild<QGraphicsView*>()->viewport()->installEventFilter(this);
  connect(view_, &QPrintPreviewWidget::previewChanged, this, &frmPreview::ShowZoom);
  AddScrollKey(QKeySequence::MoveToNextPage, 1);
  AddScrollKey(QKeySequence::MoveToPreviousPage, -1);
  RefreshCommands();
  return true;
}

QAction* frmPreview::AddCommand(const char* name, const char* icon, TextKey key, void (frmPreview::*run)(),
                                const QKeySequence& shortcut) {
  QAction* action =
      toolbar_->addAction(ui::ThemedIcon(QLatin1String(icon)), ui::PlainCaption(commands_.Texts(), key));
  action->setObjectName(QLatin1String(name));
  if (!shortcut.isEmpty()) {
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  }
  connect(action, &QAction::triggered, this, run);
  addAction(action);
  return action;
}

void frmPreview::BuildToolbar() {
  toolbar_->setObjectName("tlbPreview");
  // No key for printing: the main window's own means this window as well.
  AddCommand("cmdPrint", "Print", "DRS_PRINT"_key, &frmPreview::Print);
  AddCommand("cmdSavePdf", "SavePdf", "DRS_SAVEPDF"_key, &frmPreview::SavePdf, QKeySequence::Save);
  toolbar_->addSeparator();
  AddCommand("cmdZoomOut", "ZoomOut", "DRS_ZOOMOUT"_key, &frmPreview::ZoomOut, QKeySequence::ZoomOut);
  AddZoom();
  AddCommand("cmdZoomIn", "ZoomIn", "DRS_ZOOMIN"_key, &frmPreview::ZoomIn, QKeySequence::ZoomIn);
  AddCommand("cmdFitWidth", "FitWidth", "DRS_FITWIDTH"_key, &frmPreview::FitWidth);
  AddCommand("cmdFitPage", "FitPage", "DRS_FITPAGE"_key, &frmPreview::FitPage);
  if (job_.laterEntries) {
    toolbar_->addSeparator();
    entries_ = AddCommand("cmdEntries", "Entries", "DRS_ENTRIES"_key, &frmPreview::ShowEntries);
    entries_->setCheckable(true);
    entries_->setChecked(job_.withEntries);
  }
  toolbar_->addSeparator();
  first_ = AddCommand("cmdFirstPage", "FirstPage", "DRS_FIRSTPAGE"_key, &frmPreview::FirstPage,
                      QKeySequence::MoveToStartOfDocument);
  previous_ = AddCommand("cmdPreviousPage", "PreviousPage", "DRS_PREVPAGE"_key, &frmPreview::PreviousPage);
  AddPageNumber();
  next_ = AddCommand("cmdNextPage", "NextPage", "DRS_NEXTPAGE"_key, &frmPreview::NextPage);
  last_ = AddCommand("cmdLastPage", "LastPage", "DRS_LASTPAGE"_key, &frmPreview::LastPage,
                     QKeySequence::MoveToEndOfDocument);
  toolbar_->addSeparator();
  AddCommand("cmdClose", "Close", "GL_CLOSE"_key, &frmPreview::Close, Qt::Key_Escape);
}

void frmPreview::AddZoom() {
  cmbZoom_ = new QComboBox;
  cmbZoom_->setObjectName("cmbZoom");
  cmbZoom_->setToolTip(Caption(commands_.Texts(), "DRS_ZOOM"_key));
  cmbZoom_->setAccessibleName(cmbZoom_->toolTip());
  for (const int zoom : kZooms) cmbZoom_->addItem(QStringLiteral("%1 %").arg(zoom), zoom);
  cmbZoom_->setPlaceholderText(QStringLiteral("100 %"));
  connect(cmbZoom_, &QComboBox::activated, this, &frmPreview::SetZoom);
  toolbar_->addWidget(cmbZoom_);
}

/// "Page 3 of 12", in which the 3 can be changed.
void frmPreview::AddPageNumber() {
  numPage_ = new QSpinBox;
  numPage_->setObjectName("numPage");
  numPage_->setAccessibleName(ui::PlainCaption(commands_.Texts(), "DRS_PAGE"_key));
  numPage_->setButtonSymbols(QAbstractSpinBox::NoButtons);
  numPage_->setKeyboardTracking(false);
  numPage_->setAlignment(Qt::AlignCenter);
  ShowPageCount();
  connect(numPage_, &QSpinBox::valueChanged, this, &frmPreview::GoToPage);
  toolbar_->addWidget(numPage_);
}

void frmPreview::ShowPageCount() {
  const QString text =
      ui::Caption(commands_.Texts(), "DRS_PAGEOF"_key, {{"lngPages", std::to_string(PageCount())}});
  const QString marker = QStringLiteral("$lngPage$");
  const auto at = std::max<qsizetype>(text.indexOf(marker, 0, Qt::CaseInsensitive), 0);
  const QSignalBlocker quiet(numPage_);
  numPage_->setPrefix(text.left(at));
  numPage_->setSuffix(text.mid(at + marker.size()));
  numPage_->setRange(1, PageCount());
}

// Called by the view from inside the event loop: nothing may be thrown, and no box may open, before it has
// returned.
void frmPreview::PaintCurrentPage(QPrinter* printer) {
  QPainter painter(printer);
  try {
    report_->PaintPage(painter, page_);
  } catch (const std::exception& error) {
    QTimer::singleShot(
        0, this, [this, text = ReportErrorText(commands_.Texts(), error)] { commands_.ShowFailure(text); });
  }
}

void frmPreview::GoToPage(int page) {
  page = std::clamp(page, 1, PageCount());
  if (page == page_) return;
  page_ = page;
  view_->updatePreview();
  ScrollToTop();
  RefreshCommands();
}

void frmPreview::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // The page is fitted to the window while that takes its size, and is left with its middle in sight.
  QTimer::singleShot(0, this, &frmPreview::ScrollToTop);
}

void frmPreview::ScrollToTop() {
  ScrollBar().setValue(ScrollBar().minimum());
}

QScrollBar& frmPreview::ScrollBar() const {
  return *view_->findChild<QGraphicsView*>()->verticalScrollBar();
}

void frmPreview::ScrollOrTurn(int direction) {
  QScrollBar& bar = ScrollBar();
  const bool atEnd = direction > 0 ? bar.value() == bar.maximum() : bar.value() == bar.minimum();
  if (!atEnd) {
    bar.setValue(bar.value() + direction * bar.pageStep());
  } else if (const int before = page_; GoToPage(page_ + direction), page_ != before) {
    bar.setValue(direction > 0 ? bar.minimum() : bar.maximum());
  }
}

void frmPreview::AddScrollKey(const QKeySequence& key, int direction) {
  auto* shortcut = new QShortcut(key, this);
  shortcut->setContext(Qt::WidgetWithChildrenShortcut);
  connect(shortcut, &QShortcut::activated, this, [this, direction] { ScrollOrTurn(direction); });
}

bool frmPreview::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Wheel) return QWidget::eventFilter(watched, event);
  const auto& wheel = static_cast<const QWheelEvent&>(*event);
  const int turned = -wheel.angleDelta().y();
  const QScrollBar& bar = ScrollBar();
  const bool atEnd = turned > 0 ? bar.value() == bar.maximum() : bar.value() == bar.minimum();
  if (turned == 0 || !atEnd || wheel.modifiers() != Qt::NoModifier) {
    wheelTurned_ = 0;
    return QWidget::eventFilter(watched, event);
  }
  wheelTurned_ += turned;
  if (std::abs(wheelTurned_) >= kWheelNotch) {
    wheelTurned_ = 0;
    ScrollOrTurn(turned > 0 ? 1 : -1);
  }
  return true;
}

void frmPreview::RefreshCommands() {
  const QSignalBlocker quiet(numPage_);
  numPage_->setValue(page_);
  first_->setEnabled(page_ > 1);
  previous_->setEnabled(page_ > 1);
  next_->setEnabled(page_ < PageCount());
  last_->setEnabled(page_ < PageCount());
}

void frmPreview::SetZoom() {
  view_->setZoomMode(QPrintPreviewWidget::CustomZoom);
  view_->setZoomFactor(cmbZoom_->currentData().toInt() / 100.0);
  ShowZoom();
}

/// No entry of the list but the factor itself, which is seldom one of them.
void frmPreview::ShowZoom() {
  cmbZoom_->setCurrentIndex(-1);
  cmbZoom_->setPlaceholderText(QStringLiteral("%1 %").arg(qRound(view_->zoomFactor() * 100)));
}

void frmPreview::ZoomIn() {
  view_->zoomIn(kZoomStep);
  ShowZoom();
}

void frmPreview::ZoomOut() {
  view_->zoomOut(kZoomStep);
  ShowZoom();
}

void frmPreview::FitWidth() {
  view_->fitToWidth();
}

void frmPreview::FitPage() {
  view_->fitInView();
}

/// Back to the first page: the others hold other rows now. As it was when that is stopped or fails.
void frmPreview::ShowEntries() {
  std::unique_ptr<PaintedReport> report;
  job_.withEntries = entries_->isChecked();
  try {
    ProgressWindow progress(this, commands_.Texts(), "DRS_PRINTING"_key);
    report = std::make_unique<PaintedReport>(job_, commands_.Page());
    if (!report->Paginate(progress)) report.reset();
  } catch (const std::exception& error) {
    report.reset();
    commands_.ShowFailure(ReportErrorText(commands_.Texts(), error));
  }
  if (!report) {
    job_.withEntries = !job_.withEntries;
    entries_->setChecked(job_.withEntries);
    return;
  }
  report_ = std::move(report);
  commands_.ChooseEntries(job_.withEntries);
  page_ = 1;
  ShowPageCount();
  view_->updatePreview();
  ScrollToTop();
  RefreshCommands();
}

void frmPreview::Print() {
  commands_.PrintReport(this, job_);
}

void frmPreview::Close() {
  (window() == this ? this : parentWidget())->close();
}

void frmPreview::SavePdf() {
  commands_.SaveReport(this, job_);
}

}  // namespace varnlog::report
