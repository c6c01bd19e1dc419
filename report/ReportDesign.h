#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/TextLookup.h"

namespace varnlog::report {

// The stored layout of the report. All lengths are points (1/72 inch).

enum class Align { kLeft, kCentre, kRight };

struct FontDesign {
  std::string name;
  std::string family;
  double size = 0;
  bool bold = false;
};

struct ColumnDesign {
  std::string name;
  double width = 0;    // on the design's own paper
  double stretch = 0;  // share of the room that another paper has more or less
  Align align = Align::kLeft;
};

struct FormulaDesign {
  std::string name;
  std::string text;
};

/// One text on the paper: a constant, a field of the row, a formula.
struct ObjectDesign {
  enum class Kind { kText, kField, kFormula, kNumber, kSummary, kSymbol };
  Kind kind = Kind::kText;
  std::string name = {};
  std::string value = {};  // field, formula field or formula text
  std::string caption = {};
  std::string label = {};          // the text object that a summary begins with
  std::optional<int> column = {};  // index; without one `from` and `to` hold
  double from = 0;                 // percent of the width
  double to = 100;
  int font = 0;  // index
  Align align = Align::kLeft;
  int lines = 1;    // what does not fit into so many ends in an ellipsis
  double down = 0;  // room above it, beside the band's own
  double side = 0;  // of a symbol
};

enum class BandWhen { kAlways, kRows, kEmpty, kSealed };

/// Objects beside each other, as high as what reaches lowest.
struct BandDesign {
  double above = 0;  // room inside the band, between its rules and its texts
  double below = 0;
  double ruleAbove = 0;  // thickness; 0 for none
  double ruleBelow = 0;
  double columnRules = 0;
  BandWhen when = BandWhen::kAlways;
  std::vector<ObjectDesign> objects = {};
};

/// kEntries: one for each entry that was made later, below its row.
enum class SectionKind { kReportHeader, kPageHeader, kDetails, kEntries, kPageFooter, kReportFooter };
inline constexpr int kSectionCount = 6;

struct ReportDesign {
  std::string paper = {};
  double margin = 0;
  double padding = 0;  // between a column's edge and its texts
  std::vector<FontDesign> fonts = {};
  std::vector<ColumnDesign> columns = {};
  std::vector<FormulaDesign> formulas = {};
  std::vector<std::vector<BandDesign>> sections = std::vector<std::vector<BandDesign>>(kSectionCount);

  [[nodiscard]] std::vector<BandDesign>& Section(SectionKind kind) {
    return sections[static_cast<std::size_t>(kind)];
  }
  [[nodiscard]] const std::vector<BandDesign>& Section(SectionKind kind) const {
    return sections[static_cast<std::size_t>(kind)];
  }
};

/// A column of the report: its place, the text object above it and what stands in each line.
struct ReportColumn {
  std::string_view name;
  double width = 0;
  double stretch = 0;
  Align align = Align::kLeft;
  std::string_view heading = {};          // the text object's name
  std::optional<core::TextKey> key = {};  // its text in the user's language; without one `caption` stays
  std::string_view caption = {};          // as designed
  std::string_view object = {};           // what stands in each line
  ObjectDesign::Kind kind = ObjectDesign::Kind::kField;
  std::string_view value = {};
  int lines = 1;
};

[[nodiscard]] std::span<const ReportColumn> ReportColumns();

/// The design of the log's report.
[[nodiscard]] ReportDesign StoredDesign();

}  // namespace varnlog::report
