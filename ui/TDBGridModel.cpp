#include "ui/TDBGridModel.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace varnlog::ui {

TDBGridModel::TDBGridModel(QObject* parent)
    : QAbstractTableModel(parent), blocks_([this](const DataFailure& failure) { ReadFailed(failure); }) {}

void TDBGridModel::SetEvents(TDBGridEvents* events) {
  events_ = events;
  blocks_.SetEvents(events);
  Refresh();
}

void TDBGridModel::SetColumns(std::vector<GridColumn> columns) {
  beginResetModel();
  columns_ = std::move(columns);
  blocks_.SetColumnCount(static_cast<int>(columns_.size()));
  endResetModel();
}

void TDBGridModel::ReBind(std::int64_t count) {
  beginResetModel();
  rowCount_ = static_cast<int>(std::clamp<std::int64_t>(count, 0, kMostRows));
  blocks_.Clear();
  readFailureTold_ = false;
  endResetModel();
}

void TDBGridModel::SetRowCount(std::int64_t count) {
  const int rows = static_cast<int>(std::clamp<std::int64_t>(count, 0, kMostRows));
  if (rows > rowCount_) {
    // The last block may have been read when it was shorter.
    blocks_.ForgetFrom(rowCount_);
    beginInsertRows({}, rowCount_, rows - 1);
    rowCount_ = rows;
    endInsertRows();
  } else if (rows < rowCount_) {
    blocks_.ForgetFrom(rows);
    beginRemoveRows({}, rows, rowCount_ - 1);
    rowCount_ = rows;
    endRemoveRows();
  }
}

// Who shows a failure refreshes the grid, and a failure that lasts must not be told again each time.
void TDBGridModel::Refresh() {
  blocks_.Renew();
  if (rowCount_ > 0 && !columns_.empty()) {
    emit dataChanged(index(0, 0), index(rowCount_ - 1, columnCount() - 1));
  }
}

void TDBGridModel::RefetchRow(int row) {
  if (row < 0 || row >= rowCount_ || columns_.empty()) return;
  blocks_.Renew(row);
  emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

TDBGridModel::Cell TDBGridModel::CellAt(int row, int column) const {
  const RowBlocks::Row found = blocks_.At(row);
  if (found.buffer == nullptr) return {};
  const CellState state = found.buffer->State(found.index, column);
  return {found.buffer->Value(found.index, column).value_or(QString()),
          !allowUpdate_ && IsOpen(state) ? CellState::kLocked : state,
          found.buffer->IsMarked(found.index, column), column == 0 && found.buffer->IsNew(found.index)};
}

std::optional<std::int64_t> TDBGridModel::BookmarkAt(int row) const {
  const RowBlocks::Row found = blocks_.At(row);
  if (found.buffer == nullptr) return std::nullopt;
  return found.buffer->Bookmark(found.index);
}

void TDBGridModel::SetStateText(CellState state, const QString& text) {
  stateTexts_.at(static_cast<std::size_t>(state)) = text;
}

QString TDBGridModel::StateText(int row, int column) const {
  const Cell cell = CellAt(row, column);
  const CellState state = cell.state;
  if (cell.isNew) return newText_;
  if (const QString& text = Column(column).openText; state == CellState::kEdit && !text.isEmpty())
    return text;
  return stateTexts_.at(static_cast<std::size_t>(state));
}

QString TDBGridModel::NoteText(int row, int column) const {
  const auto bookmark = BookmarkAt(row);
  if (events_ == nullptr || !bookmark || !CellAt(row, column).isMarked) return {};
  try {
    return events_->CellNote(*bookmark, column);
  } catch (const std::exception&) {
    return {};  // what cannot be read is told where rows are read
  }
}

QString TDBGridModel::TipText(int row, int column) const {
  const auto bookmark = BookmarkAt(row);
  if (events_ == nullptr || !bookmark) return {};
  try {
    return events_->CellTip(*bookmark, column);
  } catch (const std::exception&) {
    return {};  // what cannot be read is told where rows are read
  }
}

QString TDBGridModel::Description(int row, int column) const {
  QStringList parts{TipText(row, column), StateText(row, column), NoteText(row, column)};
  parts.removeAll(QString());
  return parts.join(QStringLiteral("; "));
}

int TDBGridModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rowCount_;
}

int TDBGridModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant TDBGridModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::AccessibleTextRole:
      return CellAt(index.row(), index.column()).text;
    case Qt::AccessibleDescriptionRole:
      return Description(index.row(), index.column());
    default:
      return {};
  }
}

QVariant TDBGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  const GridColumn& column = Column(section);
  if (role == Qt::DisplayRole) return column.heading;
  if (role == Qt::ToolTipRole) return column.tip;
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
  return {};
}

Qt::ItemFlags TDBGridModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
  if (allowUpdate_ && Column(index.column()).editable) flags |= Qt::ItemIsEditable;
  return flags;
}

bool TDBGridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid() || events_ == nullptr || !allowUpdate_) return false;
  // A message box opened by a handler takes the focus from the editor, which then hands its text in again.
  if (writing_) return false;
  const QString text = value.toString();
  return text == CellAt(index.row(), index.column()).text || Enter(index, text);
}

bool TDBGridModel::Enter(const QModelIndex& index, const QString& text) {
  if (writing_ || events_ == nullptr) return false;
  const QPersistentModelIndex cell(index);
  writing_ = true;
  const std::optional<DataFailure> failure = Write(index, text);
  writing_ = false;
  // Where nothing was stored and it may be tried again, the row is as it was read.
  if (cell.isValid() && !(failure && failure->keepsEntry)) RefetchRow(cell.row());
  if (failure) emit Failed(*failure);
  return !failure;
}

std::optional<DataFailure> TDBGridModel::Write(const QModelIndex& index, const QString& text) {
  const std::optional<std::int64_t> bookmark = BookmarkAt(index.row());
  if (!bookmark) return DataFailure{};
  RowBuffer row(1, columnCount());
  row.SetBookmark(0, *bookmark);
  row.SetValue(0, index.column(), text);
  try {
    return events_->UnboundWriteData(row, *bookmark);
  } catch (const std::exception& e) {
    return DataFailure{0, QString::fromUtf8(e.what())};
  }
}

void TDBGridModel::ReadFailed(const DataFailure& failure) {
  // One message, not one for every block that is painted.
  if (std::exchange(readFailureTold_, true)) return;
  emit Failed(failure);
}

}  // namespace varnlog::ui
