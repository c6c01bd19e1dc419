#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace varnlog::report {

/// A design that cannot be read; the text names the line and what is wrong there.
class DesignError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

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
  enum class Kind { kText, kField, kFormula, kNumber, kSummary };
  Kind kind = Kind::kText;
  std::string name;
  std::string value;  // field, formula field or formula text
  std::string caption;
  std::string label;          // the text object that a summary begins with
  std::optional<int> column;  // index; without one `from` and `to` hold
  double from = 0;            // percent of the width
  double to = 100;
  int font = 0;  // index
  Align align = Align::kLeft;
  int lines = 1;  // what does not fit into so many ends in an ellipsis
};

enum class BandWhen { kAlways, kRows, kEmpty };

/// Objects beside each other, as high as the highest of them.
struct BandDesign {
  double above = 0;  // room inside the band, between its rules and its texts
  double below = 0;
  double ruleAbove = 0;  // thickness; 0 for none
  double ruleBelow = 0;
  double columnRules = 0;
  BandWhen when = BandWhen::kAlways;
  std::vector<ObjectDesign> objects;
};

enum class SectionKind { kReportHeader, kPageHeader, kDetails, kPageFooter, kReportFooter };
inline constexpr int kSectionCount = 5;

struct ReportDesign {
  std::string paper;
  double margin = 0;
  double padding = 0;  // between a column's edge and its texts
  std::vector<FontDesign> fonts;
  std::vector<ColumnDesign> columns;
  std::vector<FormulaDesign> formulas;
  std::vector<std::vector<BandDesign>> sections{kSectionCount};

  [[nodiscard]] const std::vector<BandDesign>& Section(SectionKind kind) const {
    return sections[static_cast<std::size_t>(kind)];
  }
};

/// Reads a design; resources/report/dsrResults.design describes the format. Throws DesignError.
[[nodiscard]] ReportDesign ReadReportDesign(std::string_view text);

/// The design that is stored with the program.
[[nodiscard]] std::string_view StoredDesignText();
inline constexpr std::string_view kStoredDesignName = "dsrResults.design";

}  // namespace varnlog::report
