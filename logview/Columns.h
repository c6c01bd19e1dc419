#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "core/TextLookup.h"

namespace varnlog::logview {

/// How a column's text is made of the row and, where it can be entered, stored again.
enum class Form {
  kStored,     // the field as it is
  kRowNumber,  // place in the record set
  kDate,       // day of the time stamp
  kPatient,    // surname, first name, birth date
  kPregnancy,  // code and its text
  kRegion,     // tooth in the configured numbering, given the exposure type
  kRetake,     // code and its text
};

/// One column of the grid; the whole grid is the table kColumns. Display, storing, edit rules, widths, lists,
/// sorting and `varnlogctl list --display` walk it: a column is added or changed here alone, unless it needs
/// a form of its own.
struct Column {
  std::string_view headingKey = {};  // text key; empty when `heading` is fixed
  std::string_view heading = {};     // fixed heading
  std::string_view tipKey = {};      // text key of what the column holds, in full
  Form form = Form::kStored;
  std::string_view field = {};     // the field that an edit writes; empty when the column is never written
  std::string_view editFlag = {};  // yes/no field that says whether `field` is open; empty: always open
  bool exceptForMen = false;       // never open for a male patient
  bool mayBeEmpty = false;         // nothing is a value, too
  bool limitsInput = true;         // the grid takes no more characters than the field
  std::span<const core::TextKey> choices =
      {};                 // texts to choose from, beside an empty one; empty: typed freely
  int digits = 0;         // width until the user changes it, in digits of the font
  bool isNumber = false;  // shown to the right
  bool suggests = false;  // while it is typed, what was entered before is proposed
  std::array<std::string_view, 3> sortFields = {};  // what the heading sorts by; empty: `field`

  [[nodiscard]] bool IsWritten() const { return !field.empty(); }
  [[nodiscard]] bool IsList() const { return !choices.empty(); }
  /// The ORDER BY clause of a click on the heading; "" where there is no order.
  [[nodiscard]] std::string SortClause(bool descending) const;
};

/// The columns that logic and tests ask for by name.
enum ColumnIndex : int {
  kNumberColumn = 0,
  kDateColumn = 1,
  kPatientColumn = 2,
  kPregnancyColumn = 3,
  kTypeColumn = 4,
  kRegionColumn = 5,
  kDoseColumn = 9,
  kRetakeColumn = 10,
  kPersonColumn = 11,
  kCommentColumn = 12,
};

inline constexpr int kColumnCount = 13;
extern const std::array<Column, kColumnCount> kColumns;

/// A type of exposure in plain words; "" for a code that is none.
[[nodiscard]] std::string TypeName(std::string_view code, const core::TextLookup& texts);

/// A heading in the current language; "" outside 0 to 12.
[[nodiscard]] std::string ColumnHeading(int column, const core::TextLookup& texts);

}  // namespace varnlog::logview
