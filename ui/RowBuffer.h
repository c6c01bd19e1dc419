#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <QString>

namespace varnlog::ui {

/// What the user may do with a cell; each state has its colours and its text.
enum class CellState : std::uint8_t {
  kPlain,     // not the user's to change; the grid's own colours
  kEdit,      // open to an entry
  kLocked,    // was open, or came filled in
  kNoneEdit,  // can never be edited although its column can
  kPending,   // entered, and still open for a while; looks like kEdit
};
inline constexpr std::size_t kCellStates = 5;

[[nodiscard]] constexpr bool IsOpen(CellState state) {
  return state == CellState::kEdit || state == CellState::kPending;
}

/// Rows on their way between the grid and whoever holds the data. For reading, the grid asks for RowCount()
/// rows and the handler fills them from 0 on and sets the number that it filled; for writing there is one
/// row, in which the columns that did not change are Null.
class RowBuffer {
 public:
  RowBuffer(int rows, int columns)
      : capacity_(rows),
        rowCount_(rows),
        columnCount_(columns),
        cells_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)),
        bookmarks_(static_cast<std::size_t>(rows), -1),
        new_(static_cast<std::size_t>(rows)) {}

  [[nodiscard]] int RowCount() const { return rowCount_; }
  void SetRowCount(int rows) { rowCount_ = std::clamp(rows, 0, capacity_); }
  [[nodiscard]] int ColumnCount() const { return columnCount_; }

  /// Nothing stands for Null.
  [[nodiscard]] const std::optional<QString>& Value(int row, int column) const {
    return cells_[At(row, column)].value;
  }
  void SetValue(int row, int column, std::optional<QString> value) {
    cells_[At(row, column)].value = std::move(value);
  }
  [[nodiscard]] CellState State(int row, int column) const { return cells_[At(row, column)].state; }
  void SetState(int row, int column, CellState state) { cells_[At(row, column)].state = state; }

  /// A mark says that somebody changed the value; who, TDBGridEvents::CellNote tells.
  [[nodiscard]] bool IsMarked(int row, int column) const { return cells_[At(row, column)].isMarked; }
  void SetMarked(int row, int column) { cells_[At(row, column)].isMarked = true; }

  /// A new row is marked in its first column.
  [[nodiscard]] bool IsNew(int row) const { return new_[static_cast<std::size_t>(row)]; }
  void SetNew(int row) { new_[static_cast<std::size_t>(row)] = true; }

  /// Opaque to the grid: it hands the number back when it writes the row.
  [[nodiscard]] std::int64_t Bookmark(int row) const { return bookmarks_[static_cast<std::size_t>(row)]; }
  void SetBookmark(int row, std::int64_t bookmark) { bookmarks_[static_cast<std::size_t>(row)] = bookmark; }

 private:
  struct Cell {
    std::optional<QString> value;
    CellState state = CellState::kPlain;
    bool isMarked = false;
  };
  [[nodiscard]] std::size_t At(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columnCount_) +
           static_cast<std::size_t>(column);
  }

  int capacity_;
  int rowCount_;
  int columnCount_;
  std::vector<Cell> cells_;
  std::vector<std::int64_t> bookmarks_;
  std::vector<bool> new_;
};

}  // namespace varnlog::ui
