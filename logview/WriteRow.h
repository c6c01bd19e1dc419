#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "intake/CodeMappings.h"
#include "logview/CEdits.h"
#include "logview/Columns.h"

namespace varnlog::logview {

/// One edited row as the grid hands it over: the entered text of each changed column.
using RowBuffer = std::array<std::optional<std::string>, kColumnCount>;

/// Writes the changed values of one row and notes for each the flag that is to be cleared. All of it is
/// stored or nothing is: throws dao::EngineError with the row as it was and nothing noted. The result names
/// the columns that hold no entry of the user's; nothing was written for them.
std::vector<std::string> WriteRow(dao::Recordset& rows, dao::Bookmark location, const RowBuffer& entered,
                                  const core::TextLookup& texts, const intake::ToothScheme& scheme,
                                  CEdits& edits);

/// The grid's numbers for what can go wrong with a row.
enum class DataError : std::int32_t {
  kFieldLength = 18,
  kRecordDeleted = 3585,
  kRecordInUse = 16389,
};

/// The message of a grid error; nothing for an error that is shown in the grid's own words.
[[nodiscard]] std::optional<core::TextKey> DataErrorKey(std::int32_t dataError);

/// The grid's number for an engine error; the engine's own number where the grid has none.
[[nodiscard]] std::int32_t DataErrorOf(dao::ErrorNumber number);

}  // namespace varnlog::logview
