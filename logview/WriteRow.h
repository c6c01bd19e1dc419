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

/// What was entered into one row: the text of each changed column. A value is this from the grid's door on.
using EnteredValues = std::array<std::optional<std::string>, kColumnCount>;

struct RowWritten {
  /// One of the values was locked since its editor was opened; nothing was written.
  bool isLocked = false;
  /// The columns that hold no entry of the user's; nothing was written for them.
  std::vector<std::string> refused = {};
};

/// Writes the changed values of one row and notes for each the flag that is to be cleared. All of it is
/// stored or nothing is: throws dao::EngineError with the row as it was and nothing noted. That a value is
/// open is known by the transaction that writes it, whatever other workstations do meanwhile.
RowWritten WriteRow(dao::Recordset& rows, dao::Bookmark location, const EnteredValues& entered,
                    const core::TextLookup& texts, const intake::ToothScheme& scheme, CEdits& edits);

/// Takes the pending entry of a cell back: the value is what it was before the first correction, and will not
/// be locked. False when that cell has no pending entry, or when it was locked meanwhile. Throws
/// dao::EngineError with everything as it was.
bool TakeEntryBack(dao::Recordset& rows, dao::Bookmark location, int column, CEdits& edits);

/// The grid's numbers for what can go wrong with a row.
enum class DataError : std::int32_t {
  kLocked = 17,  // a number that neither grid nor engine uses
  kFieldLength = 18,
  kRecordDeleted = 3585,
  kRecordInUse = 16389,
};

/// The message of a grid error; nothing for an error that is shown in the grid's own words.
[[nodiscard]] std::optional<core::TextKey> DataErrorKey(std::int32_t dataError);

/// The grid's number for an engine error; the engine's own number where the grid has none.
[[nodiscard]] std::int32_t DataErrorOf(dao::ErrorNumber number);

}  // namespace varnlog::logview
