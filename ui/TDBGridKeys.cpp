#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>

#include "ui/TDBGrid.h"

namespace varnlog::ui {

namespace {

using RowSpan = std::pair<int, int>;  // first and last

std::vector<RowSpan> SelectedRows(const QItemSelection& selection) {
  std::vector<RowSpan> spans;
  spans.reserve(static_cast<std::size_t>(selection.size()));
  for (const QItemSelectionRange& range : selection) spans.emplace_back(range.top(), range.bottom());
  std::sort(spans.begin(), spans.end());
  std::vector<RowSpan> merged;
  for (const RowSpan& span : spans) {
    if (!merged.empty() && span.first <= merged.back().second + 1) {
      merged.back().second = std::max(merged.back().second, span.second);
    } else {
      merged.push_back(span);
    }
  }
  return merged;
}

std::set<int> SelectedColumns(const QItemSelection& selection) {
  std::set<int> columns;
  for (const QItemSelectionRange& range : selection) {
    for (int column = range.left(); column <= range.right(); ++column) columns.insert(column);
  }
  return columns;
}

bool Covers(const QItemSelection& selection, int row, int column) {
  return std::any_of(selection.begin(), selection.end(), [row, column](const QItemSelectionRange& range) {
    return range.contains(row, column, {});
  });
}

QString OneField(QString text) {
  std::replace_if(
      text.begin(), text.end(), [](QChar c) { return c == '\t' || c == '\n' || c == '\r'; }, QChar(' '));
  return text;
}

}  // namespace

QString TDBGrid::SelectionText(Copied copied) {
  const QItemSelection selection = selectionModel()->selection();
  std::set<int> columns = SelectedColumns(selection);
  std::erase_if(columns, [this](int column) { return isColumnHidden(column); });
  const std::vector<RowSpan> spans = SelectedRows(selection);
  std::int64_t selected = 0;
  for (const auto& [first, last] : spans) selected += last - first + 1;
  QStringList lines;
  if (copied == Copied::kWithHeadings) {
    QStringList headings;
    for (const int column : columns) headings << OneField(model_.Column(column).heading);
    lines << headings.join('\t');
    ++selected;
  }
  for (const auto& [first, last] : spans) {
    for (int row = first; row <= last; ++row) {
      QStringList fields;
      for (const int column : columns) {
        fields << (Covers(selection, row, column) ? OneField(CellText(row, column)) : QString());
      }
      lines << fields.join('\t');
      const bool tells = lines.size() % kRowsPerCopySlice == 0 || lines.size() == selected;
      if (tells && events_ != nullptr && !events_->CopyProgress(lines.size(), selected)) return {};
    }
  }
  return lines.join('\n');
}

void TDBGrid::CopySelection(Copied copied) {
  if (!selectionModel()->hasSelection()) return;
  if (const QString text = SelectionText(copied); !text.isNull()) QApplication::clipboard()->setText(text);
}

void TDBGrid::keyPressEvent(QKeyEvent* event) {
  StopSearch();
  if (HandleKey(event)) {
    event->accept();
  } else {
    QTableView::keyPressEvent(event);
  }
}

bool TDBGrid::HandleKey(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    CopySelection();
    return true;
  }
  if (event->matches(QKeySequence::Undo)) {
    if (events_ != nullptr) events_->Undo();
    return true;
  }
  if (event->key() == Qt::Key_C && event->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier)) {
    CopySelection(Copied::kWithHeadings);
    return true;
  }
  const bool alt = event->modifiers().testFlag(Qt::AltModifier);
  const QModelIndex current = currentIndex();
  switch (event->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      if (event->modifiers().testFlag(Qt::ControlModifier)) return false;
      MoveToOpenCell(event->key() == Qt::Key_Tab ? Direction::kForward : Direction::kBackward);
      return true;
    case Qt::Key_F4:
    case Qt::Key_Down:
      if (event->key() == Qt::Key_Down ? !alt : event->modifiers() != Qt::NoModifier) return false;
      if (current.isValid() && delegate_.HasButton(current.row(), current.column())) PressButton(current);
      return true;
    case Qt::Key_Up:
      if (!alt) return false;
      if (current.isValid()) ClickHeading(current.column());
      return true;
    default:
      return false;
  }
}

void TDBGrid::MoveToOpenCell(Direction direction) {
  const QModelIndex current = currentIndex();
  const int step = direction == Direction::kForward ? 1 : -1;
  search_ = {direction, std::max(current.row(), 0), current.isValid() ? current.column() + step : 0};
  if (!StepSearch()) searchTimer_.start();
}

bool TDBGrid::StepSearch() {
  const bool forward = search_.direction == Direction::kForward;
  for (int i = 0; i < kRowsPerSearchSlice; ++i) {
    if (search_.row < 0 || search_.row >= model_.rowCount()) return true;
    if (SearchRow(search_.row)) return true;
    search_.row += forward ? 1 : -1;
    search_.column = forward ? 0 : ColumnCount() - 1;
  }
  return false;
}

bool TDBGrid::SearchRow(int row) {
  const int step = search_.direction == Direction::kForward ? 1 : -1;
  for (int column = search_.column; column >= 0 && column < ColumnCount(); column += step) {
    const bool open =
        !model_.AllowUpdate() ||
        (model_.Column(column).editable && IsOpen(StateOf(row, column)) && CellText(row, column).isEmpty());
    if (!open || isColumnHidden(column)) continue;
    SetCurrentCell(row, column);
    return true;
  }
  return false;
}

}  // namespace varnlog::ui
