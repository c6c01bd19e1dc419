#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "db/TextLookup.h"
#include "db/dao/Recordset.h"
#include "intake/CodeMappings.h"
#include "platform/ShortDate.h"

namespace varnlog::logview {

/// One column of the grid; the whole grid is the table kColumns.
struct Column {
  std::string_view headingKey;  // text key; empty when `heading` is fixed
  std::string_view heading;     // fixed heading
  std::string_view field;       // the field that an edit writes; empty when the column is never written
  std::string_view editFlag;    // yes/no field that says whether `field` is open; empty: always open
  std::string_view ascending;   // ORDER BY clauses; empty: no sort
  std::string_view descending;
};

inline constexpr int kColumnCount = 13;
extern const std::array<Column, kColumnCount> kColumns;

/// Headings in the current language.
[[nodiscard]] std::string ColumnHeading(int column, const db::TextLookup& texts);

/// Turns the current row of a record set over TXray into the texts of the grid. Keeps references to the
/// record set's fields, so it lives no longer than that.
class RowDisplay {
 public:
  RowDisplay(dao::Recordset& rows, const db::TextLookup& texts, const intake::ToothScheme& scheme,
             const platform::ShortDate& shortDate);

  /// The text of one column; "" outside 0 to 12.
  [[nodiscard]] std::string Text(int column) const;

 private:
  dao::Recordset& rows_;
  const db::TextLookup& texts_;
  const intake::ToothScheme& scheme_;
  const platform::ShortDate& shortDate_;
  std::array<dao::Field*, 16> fields_{};
};

}  // namespace varnlog::logview
