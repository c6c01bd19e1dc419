#pragma once

#include <array>
#include <string>
#include <string_view>

#include "core/TextLookup.h"

namespace varnlog::logview {

/// One column of the grid; the whole grid is the table kColumns.
struct Column {
  std::string_view headingKey;  // text key; empty when `heading` is fixed
  std::string_view tipKey;      // text key of what the column holds, in full
  std::string_view heading;     // fixed heading
  std::string_view field;       // the field that an edit writes; empty when the column is never written
  std::string_view editFlag;    // yes/no field that says whether `field` is open; empty: always open
  std::string_view ascending;   // ORDER BY clauses; empty: no sort
  std::string_view descending;
};

/// The columns that logic asks for by name.
enum ColumnIndex : int {
  kNumberColumn = 0,
  kDateColumn = 1,
  kPatientColumn = 2,
  kPregnancyColumn = 3,
  kTypeColumn = 4,
  kRegionColumn = 5,
  kDoseColumn = 9,
  kRetakeColumn = 10,
  kCommentColumn = 12,
};

inline constexpr int kColumnCount = 13;
extern const std::array<Column, kColumnCount> kColumns;

/// A heading in the current language; "" outside 0 to 12.
[[nodiscard]] std::string ColumnHeading(int column, const core::TextLookup& texts);

}  // namespace varnlog::logview
