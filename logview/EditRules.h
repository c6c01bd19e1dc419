#pragma once

#include <array>
#include <optional>

#include "core/Globals.h"
#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "logview/Columns.h"

namespace varnlog::logview {

/// What the grid does when the user wants to change a cell.
struct EditDecision {
  bool allowed = false;
  bool beep = false;
  std::optional<core::TextKey> message;  // shown with the information icon
};

/// Before the editor of a cell opens. `rows` stands on the cell's row. Every value can be corrected once, the
/// comment always; number, date and patient never, nor the pregnancy of a male patient.
[[nodiscard]] EditDecision BeforeColEdit(dao::Recordset& rows, int column);

/// The same for the drop-down button of the pregnancy and retake columns. What it refuses, it refuses
/// audibly, because the list has dropped down already.
[[nodiscard]] EditDecision ButtonClick(dao::Recordset& rows, int column);

enum class CellState {
  kPlain,     // number, date, patient: the grid's own colours
  kEdit,      // open to the user's entry
  kLocked,    // corrected once, or delivered by the imaging suite
  kNoneEdit,  // can never be edited although its column can
};

/// How the cells of the current row are to look. Looks the record set's fields up once, so it lives no longer
/// than that.
class CellStates {
 public:
  explicit CellStates(dao::Recordset& rows);
  [[nodiscard]] CellState Of(int column) const;

 private:
  const dao::Field& sex_;
  std::array<const dao::Field*, kColumnCount> flags_{};  // nullptr where a column has no flag
};

/// The same for one cell.
[[nodiscard]] CellState CellStateOf(dao::Recordset& rows, int column);

/// Why nothing can be entered into a read-only log.
[[nodiscard]] core::TextKey ReadOnlyReason(const core::Globals& globals);

/// The most characters that may be typed into a column, or nothing where the grid sets no limit.
[[nodiscard]] std::optional<int> InputLimit(dao::Recordset& rows, int column);

}  // namespace varnlog::logview
