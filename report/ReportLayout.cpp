#include "report/ReportLayout.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace varnlog::report {

namespace {

constexpr double kNarrowest = 2.0 / 3;  // of a column that stretches
constexpr double kLeastHeight = 300;    // header, footer and a few rows
constexpr double kTolerance = 0.001;    // sums of heights differ in the last digits
constexpr int kAllLines = 1'000;
constexpr std::size_t kAllEntries = std::numeric_limits<std::size_t>::max();
constexpr std::int64_t kRowsBetweenReports = 512;
constexpr std::int64_t kRowsAtATime = 8'192;

double LeastWidthOf(const ColumnDesign& column) {
  return column.stretch > 0 ? column.width * kNarrowest : column.width;
}

}  // namespace

double LeastWidth(const ReportDesign& design) {
  double width = 0;
  for (const ColumnDesign& column : design.columns) width += LeastWidthOf(column);
  return width;
}

std::vector<double> ColumnEdges(const ReportDesign& design, double width) {
  double room = width;
  double stretches = 0;
  for (const ColumnDesign& column : design.columns) {
    room -= column.width;
    stretches += column.stretch;
  }
  const double shrinkable = std::max(width - room - LeastWidth(design), kTolerance);
  std::vector<double> edges = {0};
  for (const ColumnDesign& column : design.columns) {
    double share = 0;
    if (room >= 0 && stretches > 0) share = room * column.stretch / stretches;
    if (room < 0) share = room * (column.width - LeastWidthOf(column)) / shrinkable;
    edges.push_back(edges.back() + column.width + share);
  }
  edges.back() = width;
  return edges;
}

ReportLayout::ReportLayout(const ReportDesign& design, const dsrResults& report, dao::Recordset& rows,
                           const platform::ShortDate& shortDate, const TextMetrics& metrics, PageArea area,
                           LaterEntriesOf laterEntries)
    : rows_(rows),
      line_(rows, report.PrintDate()),
      isSealed_(report.Symbol().width > 0),
      laterEntries_(std::move(laterEntries)) {
  scale_ = std::min({1.0, area.width / LeastWidth(design), area.height / kLeastHeight});
  scale_ = std::max(scale_, kTolerance);
  pageHeight_ = area.height / scale_;
  columnEdges_ = ColumnEdges(design, area.width / scale_);
  const BandSurroundings around{design, report, shortDate, metrics, columnEdges_};
  for (const std::vector<BandDesign>& section : design.sections) {
    Bands& bands = sections_.emplace_back();
    for (const BandDesign& band : section) bands.emplace_back(band, around);
  }
}

bool ReportLayout::Paginate(ReportProgress& progress) {
  pageStarts_ = {PageStart()};
  deleted_ = 0;
  if (!CountRows(progress)) return false;
  line_.SetCount(rowCount_);
  return PlaceRows(progress);
}

bool ReportLayout::CountRows(ReportProgress& progress) {
  while (!rows_.Populate(kRowsAtATime)) {
    if (!progress.Counting(0, rows_.RecordCount())) return false;
  }
  rowCount_ = rows_.RecordCount();
  return progress.Counting(0, rowCount_);
}

bool ReportLayout::IsShown(const BandDesign& band) const {
  if (band.when == BandWhen::kSealed) return isSealed_;
  return band.when == BandWhen::kAlways || (band.when == BandWhen::kEmpty) == (rowCount_ == deleted_);
}

double ReportLayout::Height(std::span<const BandLayout> bands) {
  double height = 0;
  for (const BandLayout& band : bands) {
    if (IsShown(band.Design())) height += band.Height(line_, kAllLines);
  }
  return height;
}

double ReportLayout::LeastRowHeight() {
  double height = 0;
  for (const BandLayout& band : Section(SectionKind::kDetails)) height += band.LeastHeight();
  return height;
}

bool ReportLayout::PlaceRows(ReportProgress& progress) {
  bodyHeight_ = pageHeight_ - Height(SectionKind::kPageHeader) - Height(SectionKind::kPageFooter);
  used_ = Height(SectionKind::kReportHeader);
  if (rowCount_ > 0) rows_.MoveFirst();
  for (std::int64_t position = 0; position < rowCount_; ++position, rows_.MoveNext()) {
    if (position % kRowsBetweenReports == 0 && !progress.Counting(position, rowCount_)) return false;
    if (!RowIsThere()) {
      ++deleted_;
      continue;
    }
    Place(position, 0, RowHeight());
    const std::vector<std::string> entries = EntriesOfRow();
    for (std::size_t i = 0; i < entries.size(); ++i) Place(position, i + 1, EntryHeight(entries[i]));
  }
  line_.SetCount(rowCount_ - deleted_);
  PlaceReportFooter();
  return progress.Counting(rowCount_, rowCount_);
}

/// A row, or one of its entries, on this page or at the head of the next.
void ReportLayout::Place(std::int64_t row, std::size_t entry, double height) {
  const PageStart& page = pageStarts_.back();
  const bool isFirst = row == page.row && entry == page.entry;
  if (used_ + height > bodyHeight_ + kTolerance && !isFirst) {
    pageStarts_.push_back({row, entry});
    used_ = 0;
  }
  used_ += height;
  if (entry > 0) pageStarts_.back().entriesHeight += height;
}

std::vector<std::string> ReportLayout::EntriesOfRow() {
  if (!laterEntries_) return {};
  return laterEntries_(rows_.Fields("tXrayCulIntIDPk").Number(), rows_.Fields("tXraySType").Text());
}

double ReportLayout::EntryHeight(std::string entry) {
  line_.SetEntry(std::move(entry));
  return Height(SectionKind::kEntries);
}

// Band by band, so that what stands at the very end moves nothing else to another page.
void ReportLayout::PlaceReportFooter() {
  const Bands& bands = Section(SectionKind::kReportFooter);
  footerBreak_ = 0;
  for (std::size_t i = 0; i < bands.size(); ++i) {
    used_ += Height(std::span(bands).subspan(i, 1));
    if (used_ <= bodyHeight_ + kTolerance || rowCount_ == 0) continue;
    footerBreak_ = i;
    pageStarts_.push_back({rowCount_});
    return;
  }
}

std::span<const BandLayout> ReportLayout::FooterBands(int page) {
  const std::span<const BandLayout> bands(Section(SectionKind::kReportFooter));
  if (page == PageCount()) return bands.subspan(footerBreak_);
  return page + 1 == PageCount() ? bands.first(footerBreak_) : bands.first(0);
}

/// False for a row that somebody deleted.
bool ReportLayout::RowIsThere() {
  try {
    (void)rows_.Fields(0).IsNull();
    return true;
  } catch (const dao::EngineError& error) {
    if (error.number() != dao::ErrorNumber::kRecordDeleted) throw;
    return false;
  }
}

double ReportLayout::RowHeight() {
  double height = 0;
  for (const BandLayout& band : Section(SectionKind::kDetails))
    height += band.Height(line_, band.LinesWithin(bodyHeight_));
  return height;
}

void ReportLayout::PaintPage(int page, ReportCanvas& canvas) {
  line_.SetPage(page, PageCount());
  columnRules_ = {};
  double top = PaintSection(SectionKind::kPageHeader, canvas, 0);
  if (page == 1) top = PaintSection(SectionKind::kReportHeader, canvas, top);
  top = PaintRows(page, canvas, top);
  top = PaintBands(FooterBands(page), canvas, top);
  FinishColumnRules(canvas);
  PaintSection(SectionKind::kPageFooter, canvas, pageHeight_ - Height(SectionKind::kPageFooter));
  FinishColumnRules(canvas);
}

double ReportLayout::PaintBands(std::span<const BandLayout> bands, ReportCanvas& canvas, double top) {
  for (const BandLayout& band : bands) {
    if (!IsShown(band.Design())) continue;
    const double bottom = top + band.Paint(canvas, top, line_, kAllLines);
    ExtendColumnRules(canvas, band.Design(), top, bottom);
    top = bottom;
  }
  return top;
}

double ReportLayout::PaintRows(int page, ReportCanvas& canvas, double top) {
  const auto index = static_cast<std::size_t>(page - 1);
  const PageStart first = pageStarts_[index];
  const PageStart end = page < PageCount() ? pageStarts_[index + 1] : PageStart{rowCount_};
  const double bodyEnd = pageHeight_ - Height(SectionKind::kPageFooter) - Height(FooterBands(page));
  const double least = LeastRowHeight();
  double entriesLeft = first.entriesHeight;
  if (first.row < rowCount_) rows_.SetAbsolutePosition(first.row);
  for (std::int64_t row = first.row; row < end.row + (end.entry > 0 ? 1 : 0); ++row, rows_.MoveNext()) {
    if (!RowIsThere()) continue;
    const bool isContinued = row == first.row && first.entry > 0;
    // Each row that is still to come had at least this height when the pages were made; entries never change.
    const double others = static_cast<double>(end.row - row - 1) * least + entriesLeft;
    if (!isContinued) top += PaintRow(canvas, top, bodyEnd - top - others);
    const double before = top;
    top = PaintEntries(canvas, top, isContinued ? first.entry : 1, row == end.row ? end.entry : kAllEntries);
    entriesLeft -= top - before;
  }
  return top;
}

double ReportLayout::PaintEntries(ReportCanvas& canvas, double top, std::size_t first, std::size_t end) {
  const std::vector<std::string> entries = EntriesOfRow();
  for (std::size_t number = first; number < end && number <= entries.size(); ++number) {
    line_.SetEntry(entries[number - 1]);
    top = PaintSection(SectionKind::kEntries, canvas, top);
  }
  return top;
}

double ReportLayout::PaintRow(ReportCanvas& canvas, double top, double most) {
  double height = 0;
  for (const BandLayout& band : Section(SectionKind::kDetails)) {
    const double bandTop = top + height;
    height += band.Paint(canvas, bandTop, line_, band.LinesWithin(most - height));
    ExtendColumnRules(canvas, band.Design(), bandTop, top + height);
  }
  return height;
}

// Bands with column rules that touch share their rules: one rule a column and page instead of one a row.
void ReportLayout::ExtendColumnRules(ReportCanvas& canvas, const BandDesign& band, double top,
                                     double bottom) {
  const bool continues = columnRules_.thickness > 0 && columnRules_.thickness == band.columnRules;
  if (!continues) {
    FinishColumnRules(canvas);
    if (band.columnRules > 0) columnRules_ = {band.columnRules, top, bottom};
  }
  columnRules_.bottom = bottom;
}

void ReportLayout::FinishColumnRules(ReportCanvas& canvas) {
  if (columnRules_.thickness > 0) {
    for (std::size_t i = 1; i + 1 < columnEdges_.size(); ++i) {
      canvas.DrawRule(columnEdges_[i], columnRules_.top, columnEdges_[i], columnRules_.bottom,
                      columnRules_.thickness);
    }
  }
  columnRules_ = {};
}

}  // namespace varnlog::report
