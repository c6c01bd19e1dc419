#pragma once

#include <memory>

#include <QComboBox>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolBar>
#include <QWidget>

#include "report/PaintedReport.h"
#include "report/PrintCommands.h"
#include "report/ReportJob.h"

namespace varnlog::report {

/// The report on the screen, one page at a time: only the page that is shown is drawn, so that a long report
/// opens as fast as a short one and takes no more memory.
class frmPreview final : public QWidget {
 public:
  /// `commands` outlives the window, `job` works on `rows`.
  frmPreview(PrintCommands& commands, std::unique_ptr<dao::Recordset> rows, ReportJob job, QWidget* parent);
  ~frmPreview() override;

  /// Finds the pages; to be called once, before the window is shown. False when the user stopped it. Throws
  /// what PaintedReport does.
  [[nodiscard]] bool Paginate();

  [[nodiscard]] int PageCount() const { return report_->PageCount(); }
  [[nodiscard]] int CurrentPage() const { return page_; }
  /// The nearest page that there is.
  void GoToPage(int page);

 protected:
  /// The wheel turns the page at the end of one.
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QAction* AddCommand(const char* name, const char* icon, core::TextKey key, void (frmPreview::*run)(),
                      const QKeySequence& shortcut = {});
  void BuildToolbar();
  void AddZoom();
  void AddPageNumber();
  void ShowPageCount();
  void PaintCurrentPage(QPrinter* printer);
  void RefreshCommands();
  void SetZoom();
  void ShowZoom();
  [[nodiscard]] QScrollBar& ScrollBar() const;
  void ScrollToTop();
  /// Scrolls a screenful, and beyond the end of the page turns it. `direction` is 1 or -1.
  void ScrollOrTurn(int direction);
  void AddScrollKey(const QKeySequence& key, int direction);

  void Print();
  void SavePdf();
  void Close();
  void ZoomIn();
  void ZoomOut();
  void FitWidth();
  void FitPage();
  void ShowEntries();
  void FirstPage() { GoToPage(1); }
  void PreviousPage() { GoToPage(page_ - 1); }
  void NextPage() { GoToPage(page_ + 1); }
  void LastPage() { GoToPage(PageCount()); }

  PrintCommands& commands_;
  std::unique_ptr<dao::Recordset> rows_;
  ReportJob job_;
  QPrinter paper_;  // what the preview is drawn for; nothing is printed with it
  std::unique_ptr<PaintedReport> report_;
  int page_ = 1;
  int wheelTurned_ = 0;  // since the last page was turned with it

  QToolBar* toolbar_;
  QPrintPreviewWidget* view_;
  QComboBox* cmbZoom_ = nullptr;
  QSpinBox* numPage_ = nullptr;
  QAction* first_ = nullptr;
  QAction* previous_ = nullptr;
  QAction* next_ = nullptr;
  QAction* last_ = nullptr;
  QAction* entries_ = nullptr;  // nullptr where none can be found
};

}  // namespace varnlog::report
