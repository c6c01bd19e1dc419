#include "ui/TDBGrid.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QHeaderView>
#include <QPainter>
#include <QPointer>
#include <QShortcut>

#include "ui/TDBGridAccessible.h"

namespace varnlog::ui {

namespace {

constexpr int kRowPadding = 6;

void MarkSort(QHeaderView& header, std::optional<int> column, Qt::SortOrder order) {
  header.setSortIndicatorShown(column.has_value());
  header.setSortIndicator(column.value_or(-1), order);
}

}  // namespace

TDBGrid::TDBGrid(QWidget* parent) : QTableView(parent), model_(this), delegate_(model_, this) {
  InstallGridAccessibility();
  setModel(&model_);
  setItemDelegate(&delegate_);
  setSelectionMode(ExtendedSelection);
  setSelectionBehavior(SelectItems);
  setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed | SelectedClicked);
  setHorizontalScrollMode(ScrollPerPixel);
  setVerticalScrollMode(ScrollPerItem);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  SetUpHeaders();
  FitRowHeight();
  FitColumnWidths();
  // A shortcut, because it also means the cell whose editor is open.
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* confirm = new QShortcut(QKeyCombination(Qt::ControlModifier, key), this);
    confirm->setContext(Qt::WidgetWithChildrenShortcut);
    connect(confirm, &QShortcut::activated, this, [this] {
      if (CommitEdit() && !ConfirmValue()) QApplication::beep();
    });
  }
  // The handler may ask the user, which must not happen in the middle of painting or storing.
  connect(&model_, &TDBGridModel::Failed, this, &TDBGrid::RaiseError);
  searchTimer_.setInterval(0);
  connect(&searchTimer_, &QTimer::timeout, this, [this] {
    if (StepSearch()) StopSearch();
  });
}

TDBGrid::~TDBGrid() {
  // The base class outlives the model and the delegate, which are members.
  setItemDelegate(nullptr);
  setModel(nullptr);
}

void TDBGrid::SetUpHeaders() {
  // A million row headings would be a million sections to measure and to read out.
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  QHeaderView& header = *horizontalHeader();
  header.setSectionsClickable(true);
  header.setHighlightSections(false);
  header.setSectionResizeMode(QHeaderView::Interactive);
  header.setMinimumSectionSize(kNarrowest);
  header.setMaximumSectionSize(kWidest);
  header.setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  // A heading sorts; it does not select its column.
  disconnect(&header, &QHeaderView::sectionPressed, this, nullptr);
  disconnect(&header, &QHeaderView::sectionEntered, this, nullptr);
  // With the grid's own selection every heading painted would ask each row whether it is selected.
  header.setSelectionModel(new QItemSelectionModel(&model_, &header));
  connect(&header, &QHeaderView::sectionClicked, this, &TDBGrid::ClickHeading);
  connect(&header, &QHeaderView::sectionResized, this, [this](int column, int /*old*/, int width) {
    if (filling_) return;
    if (column == ColumnCount() - 1) lastWidth_ = width;
    FillWidth();
  });
}

void TDBGrid::FitRowHeight() {
  QHeaderView& rows = *verticalHeader();
  const int height = fontMetrics().height() + kRowPadding;
  rows.setMinimumSectionSize(height);
  rows.setDefaultSectionSize(height);
}

void TDBGrid::FitColumnWidths() {
  const int before = std::exchange(digitWidth_, fontMetrics().horizontalAdvance(QLatin1Char('0')));
  if (before == 0 || before == digitWidth_) return;
  for (int column = 0; column < ColumnCount(); ++column) {
    SetColumnWidth(column, ColumnWidth(column) * digitWidth_ / before);
  }
}

void TDBGrid::FillWidth() {
  const int last = ColumnCount() - 1;
  if (last < 0) return;
  const int others = horizontalHeader()->length() - columnWidth(last);
  filling_ = true;
  setColumnWidth(last, std::clamp(viewport()->width() - others, std::max(lastWidth_, kNarrowest), kWidest));
  filling_ = false;
}

void TDBGrid::SetEvents(TDBGridEvents* events) {
  events_ = events;
  model_.SetEvents(events);
}

void TDBGrid::SetColumns(std::vector<GridColumn> columns) {
  std::vector<int> widths;
  widths.reserve(columns.size());
  for (const GridColumn& column : columns) widths.push_back(column.width);
  model_.SetColumns(std::move(columns));
  for (std::size_t i = 0; i < widths.size(); ++i) SetColumnWidth(static_cast<int>(i), widths[i]);
  SetSortIndicator(std::nullopt);
}

void TDBGrid::SetMaxLength(int column, std::optional<int> characters) {
  model_.Column(column).maxLength = characters;
}

void TDBGrid::SetColumnWidth(int column, int width) {
  const int bounded = std::clamp(width, kNarrowest, kWidest);
  if (isColumnHidden(column)) {
    hiddenWidths_[column] = bounded;
    return;
  }
  if (column == ColumnCount() - 1) lastWidth_ = bounded;
  setColumnWidth(column, bounded);
  FillWidth();
}

void TDBGrid::SetColumnShown(int column, bool shown) {
  if (shown != isColumnHidden(column)) return;
  if (!shown) {
    hiddenWidths_[column] = ColumnWidth(column);
    if (currentIndex().column() == column) setCurrentIndex({});
  }
  filling_ = true;
  setColumnHidden(column, !shown);
  filling_ = false;
  if (shown) SetColumnWidth(column, hiddenWidths_[column]);
  FillWidth();
}

int TDBGrid::ColumnWidth(int column) const {
  const auto hidden = hiddenWidths_.find(column);
  if (isColumnHidden(column) && hidden != hiddenWidths_.end()) return hidden->second;
  return column == ColumnCount() - 1 ? lastWidth_ : columnWidth(column);
}

void TDBGrid::SetSortIndicator(std::optional<int> column, Qt::SortOrder order) {
  sortColumn_ = column;
  sortOrder_ = order;
  MarkSort(*horizontalHeader(), sortColumn_, sortOrder_);
}

void TDBGrid::SetSortTexts(const QString& ascending, const QString& descending) {
  ascendingText_ = ascending;
  descendingText_ = descending;
}

QString TDBGrid::SortText(int column) const {
  if (sortColumn_ != column) return {};
  return sortOrder_ == Qt::AscendingOrder ? ascendingText_ : descendingText_;
}

void TDBGrid::ClickHeading(int column) {
  StopSearch();
  if (events_ != nullptr) events_->HeadClick(column);
  // The header has moved its mark on its own account.
  MarkSort(*horizontalHeader(), sortColumn_, sortOrder_);
}

void TDBGrid::SetColors(const GridColors& colors) {
  delegate_.SetColors(colors);
  viewport()->update();
}

void TDBGrid::SetStateText(CellState state, const QString& text) {
  model_.SetStateText(state, text);
}

void TDBGrid::SetEmptyText(const QString& text) {
  emptyText_ = text;
  viewport()->update();
}

void TDBGrid::SetAllowUpdate(bool allow) {
  if (!allow) CancelEdit();
  model_.SetAllowUpdate(allow);
  viewport()->update();
}

void TDBGrid::ReBind(std::int64_t count) {
  StopSearch();
  countToBe_.reset();
  keepsEditor_ = false;
  const int column = std::max(Col(), 0);
  model_.ReBind(count);
  if (model_.rowCount() > 0) setCurrentIndex(model_.index(0, std::min(column, ColumnCount() - 1)));
}

void TDBGrid::SetApproximateCount(std::int64_t count) {
  if (!model_.IsReading()) {
    countToBe_.reset();
    model_.SetRowCount(count);
    return;
  }
  // The row being read is being painted: rows may come and go only after that.
  const bool waiting = countToBe_.has_value();
  countToBe_ = count;
  if (waiting) return;
  QTimer::singleShot(0, this, [this] {
    if (const auto rows = std::exchange(countToBe_, std::nullopt)) SetApproximateCount(*rows);
  });
}

void TDBGrid::SetCurrentCell(int row, int column) {
  if (row < 0 || row >= model_.rowCount() || column < 0 || column >= ColumnCount()) return;
  // The first call also moves the cell from which Shift extends, but might itself extend: Shift may be down.
  setCurrentIndex(model_.index(row, column));
  selectionModel()->select(currentIndex(), QItemSelectionModel::ClearAndSelect);
  scrollTo(currentIndex());
}

void TDBGrid::RaiseError(const DataFailure& failure) {
  const bool waiting = failure_.has_value();
  if (waiting && failure.isKnown) return;
  failure_ = failure;
  keepsEditor_ = keepsEditor_ || failure.keepsEntry;
  if (!waiting) QTimer::singleShot(0, this, &TDBGrid::TellError);
}

void TDBGrid::TellError() {
  const DataFailure failure = std::exchange(failure_, std::nullopt).value_or(DataFailure{});
  errorText_ = failure.text;
  int response = 1;
  const QPointer<TDBGrid> self(this);
  isTelling_ = true;
  if (events_ != nullptr && !failure.isKnown) events_->Error(failure.number, response);
  if (self.isNull()) return;
  isTelling_ = false;
  if (response != 0 && !failure.isKnown) QApplication::beep();
  ReturnToEditor();
}

void TDBGrid::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (ApproximateCount() > 0 || emptyText_.isEmpty()) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect().adjusted(0, verticalHeader()->defaultSectionSize(), 0, 0),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, emptyText_);
}

void TDBGrid::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  FillWidth();
}

void TDBGrid::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
      FitRowHeight();
      FitColumnWidths();
      break;
    case QEvent::PaletteChange:
      delegate_.ForgetPalette();
      break;
    default:
      break;
  }
}

}  // namespace varnlog::ui
