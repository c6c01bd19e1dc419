#pragma once

#include <cstdint>
#include <optional>

#include <QRect>
#include <QString>

#include "ui/RowBuffer.h"

class QPainter;

namespace varnlog::ui {

/// Why rows could not be read or written: the number that Error() gets and the text of ErrorText().
struct DataFailure {
  int number = 0;
  QString text;
  /// What was typed stays in its editor, because it may be stored the next time.
  bool keepsEntry = false;
  /// Nothing is told, because it was the user who took it back.
  bool isKnown = false;
  /// What was read of these rows before goes on being shown.
  bool keepsRows = false;
};

/// One cell of an owner-drawn column about to be painted.
struct OwnerDrawnCell {
  QPainter& painter;
  QRect rect;
  int row;
  int column;
  QString text;
  CellState state;
  bool drawButton;       // whether the grid draws the drop-down button
  bool painted = false;  // set when the handler has drawn the whole cell itself
};

/// What the grid asks of, and tells, whoever holds the data. All calls come on the user-interface thread. A
/// handler that throws a std::exception is treated as one that failed with number 0.
class TDBGridEvents {
 public:
  virtual ~TDBGridEvents() = default;

  /// Fill `rowBuf` beginning `offset` rows after `startLocation`; without a start location the offset counts
  /// from before the first row (1 is the first row) or, negative, from behind the last (-1 is the last). A
  /// handler that knows it tells the 0-based position of the first row in `approximatePosition`; rows that
  /// turn out to lie elsewhere are not shown. Must not wait for the user.
  virtual std::optional<DataFailure> UnboundReadDataEx(RowBuffer& rowBuf,
                                                       const std::optional<std::int64_t>& startLocation,
                                                       std::int64_t offset,
                                                       std::optional<std::int64_t>& approximatePosition) = 0;
  /// Store row 0 of `rowBuf` at the bookmark `writeLocation`. After a failure the grid shows the stored
  /// values again and raises Error().
  virtual std::optional<DataFailure> UnboundWriteData(const RowBuffer& rowBuf,
                                                      std::int64_t writeLocation) = 0;

  /// An editor is about to open in the current cell; `keyAscii` is the character typed, 0 for F2 or a mouse.
  /// May ask the user.
  virtual void BeforeColEdit(int /*colIndex*/, int /*keyAscii*/, bool& /*cancel*/) {}
  /// The drop-down button of the current cell; TDBGrid::CancelEdit() in here keeps the list closed.
  virtual void ButtonClick(int /*colIndex*/) {}
  virtual void HeadClick(int /*colIndex*/) {}
  /// What the mark of a cell says, for its tooltip and for screen readers. Must not wait for the user.
  [[nodiscard]] virtual QString CellNote(std::int64_t /*bookmark*/, int /*colIndex*/) { return {}; }
  /// Raised for owner-drawn columns only.
  virtual void OwnerDrawCell(OwnerDrawnCell& /*cell*/) {}
  /// What a cell's short text stands for, in words; "" when it needs none.
  [[nodiscard]] virtual QString CellTip(std::int64_t /*bookmark*/, int /*colIndex*/) { return {}; }
  /// Raised after the failing call has returned. `response` 0 keeps the grid silent; otherwise it beeps.
  virtual void Error(int /*dataError*/, int& /*response*/) {}
  /// Another cell became the current one.
  virtual void RowColChange() {}
  /// Somebody wants to edit a cell although the grid takes no entries.
  virtual void EditRefused() {}
  /// Ctrl+Z outside an editor.
  virtual void Undo() {}
  /// Now and then while many rows are copied, and when the last one is. False gives the copy up.
  virtual bool CopyProgress(std::int64_t /*copied*/, std::int64_t /*selected*/) { return true; }
};

}  // namespace varnlog::ui
