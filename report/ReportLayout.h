#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/Recordset.h"
#include "report/BandLayout.h"
#include "report/LogLine.h"

namespace varnlog::report {

/// The paper inside its margins, in points.
struct PageArea {
  double width = 0;
  double height = 0;
};

/// Told from time to time; false stops the report.
class ReportProgress {
 public:
  virtual ~ReportProgress() = default;
  virtual bool Counting(std::int64_t rowsDone, std::int64_t rows) = 0;
  virtual bool Painting(int page, int pages) = 0;
};

/// What was entered of an exposure, which has that number and type, after it came into the log, a text each.
/// Asked again, it says the same.
using LaterEntriesOf = std::function<std::vector<std::string>(std::int64_t exposure, std::string_view type)>;

/// The report on pages of one size. Rows are read as they are laid out and forgotten; what is remembered is
/// the first row of each page.
class ReportLayout {
 public:
  /// Keeps references to everything it is given. `rows` is the selection, a record set that can be
  /// positioned. With `laterEntries`, those stand below their row. Throws NamedFormulaError.
  ReportLayout(const ReportDesign& design, const dsrResults& report, dao::Recordset& rows,
               const platform::ShortDate& shortDate, const TextMetrics& metrics, PageArea area,
               LaterEntriesOf laterEntries = {});

  /// Finds out where each page begins; before anything is drawn. False when the progress stopped it. Throws
  /// NamedFormulaError and dao::EngineError.
  [[nodiscard]] bool Paginate(ReportProgress& progress);

  [[nodiscard]] int PageCount() const { return static_cast<int>(pageStarts_.size()); }
  /// On paper that is too small for the columns the whole page is drawn smaller: what its lengths are to be
  /// multiplied with. At most 1.
  [[nodiscard]] double Scale() const { return scale_; }

  /// Draws a page, 1 to PageCount(). Rows that were changed meanwhile never leave their page: they are
  /// shortened, and a row that was deleted is left out. Throws NamedFormulaError and dao::EngineError.
  void PaintPage(int page, ReportCanvas& canvas);

 private:
  using Bands = std::vector<BandLayout>;

  [[nodiscard]] Bands& Section(SectionKind kind) { return sections_[static_cast<std::size_t>(kind)]; }
  [[nodiscard]] bool IsShown(const BandDesign& band) const;
  [[nodiscard]] double Height(SectionKind kind) { return Height(Section(kind)); }
  [[nodiscard]] double LeastRowHeight();
  [[nodiscard]] bool CountRows(ReportProgress& progress);
  [[nodiscard]] bool PlaceRows(ReportProgress& progress);
  void PlaceReportFooter();
  /// The bands of the report's footer that stand on a page, which is the last or the last but one.
  [[nodiscard]] std::span<const BandLayout> FooterBands(int page);
  [[nodiscard]] double Height(std::span<const BandLayout> bands);
  [[nodiscard]] bool RowIsThere();
  [[nodiscard]] double RowHeight();
  void Place(std::int64_t row, std::size_t entry, double height);
  [[nodiscard]] std::vector<std::string> EntriesOfRow();
  [[nodiscard]] double EntryHeight(std::string entry);
  double PaintSection(SectionKind kind, ReportCanvas& canvas, double top) {
    return PaintBands(Section(kind), canvas, top);
  }
  double PaintBands(std::span<const BandLayout> bands, ReportCanvas& canvas, double top);
  double PaintRows(int page, ReportCanvas& canvas, double top);
  double PaintEntries(ReportCanvas& canvas, double top, std::size_t first, std::size_t end);
  [[nodiscard]] double PaintRow(ReportCanvas& canvas, double top, double most);
  void ExtendColumnRules(ReportCanvas& canvas, const BandDesign& band, double top, double bottom);
  void FinishColumnRules(ReportCanvas& canvas);

  dao::Recordset& rows_;
  LogLine line_;
  bool isSealed_;
  double scale_ = 1;
  double pageHeight_ = 0;
  std::vector<double> columnEdges_;
  std::vector<Bands> sections_;

  std::int64_t rowCount_ = 0;
  std::int64_t deleted_ = 0;
  LaterEntriesOf laterEntries_;

  /// Where a page begins.
  struct PageStart {
    std::int64_t row = 0;      // position
    std::size_t entry = 0;     // 0 for the row itself, else its entry of that number
    double entriesHeight = 0;  // of all entries on the page
  };
  std::vector<PageStart> pageStarts_;
  double used_ = 0;              // of the page that is being filled
  std::size_t footerBreak_ = 0;  // bands of the report's footer on the last page but one
  double bodyHeight_ = 0;        // of a page without the report header

  struct {
    double thickness = 0;  // 0: no column rules are being drawn
    double top = 0;
    double bottom = 0;
  } columnRules_;
};

/// The left edges of the columns and the right edge of the last, for paper `width` points wide: columns that
/// stretch share what the design's own paper has less or more, but none becomes narrower than two thirds.
[[nodiscard]] std::vector<double> ColumnEdges(const ReportDesign& design, double width);
/// The narrowest width for which ColumnEdges has room.
[[nodiscard]] double LeastWidth(const ReportDesign& design);

}  // namespace varnlog::report
