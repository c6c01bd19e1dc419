#pragma once

#include <string>
#include <string_view>

#include "core/Selection.h"
#include "core/TextLookup.h"
#include "platform/ShortDate.h"

namespace varnlog::logview {

/// What InitData hands to the view for one selection.
struct SelectionView {
  std::string sql;       // RecordSource
  std::string headline;  // the main window's caption; empty outside the nine kinds
  std::string icon;      // "DateAll", "PatAll" or "PatPeriod"
};

/// The query, headline and icon of the selection. Names go into the SQL as they are: one with an
/// apostrophe makes it invalid, which opening it reports.
[[nodiscard]] SelectionView BuildSelection(const core::Selection& selection, const core::TextLookup& texts,
                                           const platform::ShortDate& shortDate);

/// The SQL after a click on the heading of `column`: ascending when the current SQL contains "DESC;", else
/// descending. Columns without an order (0 and those beyond the last) leave it as it is.
[[nodiscard]] std::string SortByColumn(std::string_view sql, int column);

/// Surname, first name and birth date: "Muster, Max *01.02.1960".
[[nodiscard]] std::string FormatPatient(std::string_view name, std::string_view firstName,
                                        platform::DateTime birth, const platform::ShortDate& shortDate);

}  // namespace varnlog::logview
