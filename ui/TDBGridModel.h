#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <QAbstractTableModel>
#include <QString>
#include <QStringList>

#include "ui/RowBlocks.h"
#include "ui/RowBuffer.h"
#include "ui/TDBGridEvents.h"

namespace varnlog::ui {

/// One column as its owner sets it up.
struct GridColumn {
  QString heading{};
  int width = 100;  // device-independent pixels
  Qt::Alignment alignment = Qt::AlignLeft;
  bool editable = false;           // the column as a whole; cells are refused by BeforeColEdit
  bool ownerDraw = false;          // raises OwnerDrawCell
  std::optional<int> maxLength{};  // in characters
  QStringList list{};              // entries of the drop-down list; empty: no list
  QString openText{};              // what kEdit means in this column, where that differs from the grid's text
  QString tip{};                   // tooltip of the heading
  std::function<QStringList()> suggestions{};  // for an editor that is about to open; nothing for none
};

/// The rows as QTableView wants to see them. Holds no data but the blocks read last.
class TDBGridModel final : public QAbstractTableModel {
  Q_OBJECT
 public:
  /// More rows than this would not fit a scroll range in pixels.
  static constexpr std::int64_t kMostRows = 50'000'000;

  struct Cell {
    QString text;
    CellState state = CellState::kPlain;
    bool isMarked = false;
    bool isNew = false;  // the first cell of a new row
  };

  explicit TDBGridModel(QObject* parent = nullptr);

  void SetEvents(TDBGridEvents* events);
  [[nodiscard]] TDBGridEvents* Events() const { return events_; }

  void SetColumns(std::vector<GridColumn> columns);
  [[nodiscard]] GridColumn& Column(int column) { return columns_.at(static_cast<std::size_t>(column)); }
  [[nodiscard]] const GridColumn& Column(int column) const {
    return columns_.at(static_cast<std::size_t>(column));
  }

  /// Forgets the rows and shows `count` others.
  void ReBind(std::int64_t count);
  /// Rows are added or taken away at the end.
  void SetRowCount(std::int64_t count);
  /// Reads the rows anew when they are next shown.
  void Refresh();
  void RefetchRow(int row);

  /// Blank where there is no row (yet).
  [[nodiscard]] Cell CellAt(int row, int column) const;
  [[nodiscard]] std::optional<std::int64_t> BookmarkAt(int row) const;
  [[nodiscard]] bool IsReading() const { return blocks_.IsReading(); }
  [[nodiscard]] std::int64_t BlocksRead() const { return blocks_.ReadCount(); }

  void SetAllowUpdate(bool allow) { allowUpdate_ = allow; }
  [[nodiscard]] bool AllowUpdate() const { return allowUpdate_; }
  void SetStateText(CellState state, const QString& text);
  /// What it means that a row is new.
  void SetNewText(const QString& text) { newText_ = text; }
  /// What the cell's text stands for; "" when that needs no words.
  [[nodiscard]] QString TipText(int row, int column) const;
  /// What the state of the cell means, for those who do not see its colour.
  [[nodiscard]] QString StateText(int row, int column) const;
  /// What the mark of the cell says; "" where there is none.
  [[nodiscard]] QString NoteText(int row, int column) const;
  /// Both.
  [[nodiscard]] QString Description(int row, int column) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  /// Raises UnboundWriteData when the text differs from the one shown.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  /// Stores `text` even when it is what the cell holds; false when that failed, which Failed() tells.
  bool Enter(const QModelIndex& index, const QString& text);

 signals:
  /// A handler failed; to be told to the user once control is back in the event loop.
  void Failed(const varnlog::ui::DataFailure& failure);

 private:
  void ReadFailed(const DataFailure& failure);
  std::optional<DataFailure> Write(const QModelIndex& index, const QString& text);

  TDBGridEvents* events_ = nullptr;
  std::vector<GridColumn> columns_;
  // Reading on demand happens below const members of the base class.
  mutable RowBlocks blocks_;
  int rowCount_ = 0;
  bool allowUpdate_ = true;
  bool writing_ = false;
  bool readFailureTold_ = false;
  std::array<QString, kCellStates> stateTexts_;
  QString newText_;
};

}  // namespace varnlog::ui
