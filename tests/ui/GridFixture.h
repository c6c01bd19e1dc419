#pragma once

#include <functional>
#include <map>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <gtest/gtest.h>

#include "ui/TDBGrid.h"

namespace varnlog::ui::test {

/// Made-up exposures: column 0 the number, 1 a patient, 2 a value to be corrected, 3 a list, 4 a comment.
/// What the grid asks and tells is noted.
class MadeUpRows : public TDBGridEvents {
 public:
  explicit MadeUpRows(std::int64_t count) : count_(count) {}

  std::optional<DataFailure> UnboundReadDataEx(RowBuffer& rowBuf, const std::optional<std::int64_t>& start,
                                               std::int64_t offset,
                                               std::optional<std::int64_t>& position) override {
    ++reads;
    if (onRead) onRead();
    if (readFailure) return readFailure;
    const std::int64_t first = start ? *start + offset : offset - 1;
    position = first;
    int filled = 0;
    for (; filled < rowBuf.RowCount() && first + filled < count_; ++filled) {
      Fill(rowBuf, filled, first + filled);
    }
    rowBuf.SetRowCount(filled);
    return std::nullopt;
  }

  std::optional<DataFailure> UnboundWriteData(const RowBuffer& rowBuf, std::int64_t location) override {
    if (writeFailure) return writeFailure;
    for (int column = 0; column < rowBuf.ColumnCount(); ++column) {
      if (const auto& value = rowBuf.Value(0, column)) {
        written.emplace_back(location, column, *value);
        corrected_[{location, column}] = *value;
      }
    }
    return std::nullopt;
  }

  void BeforeColEdit(int column, int keyAscii, bool& cancel) override {
    editsAsked.emplace_back(column, keyAscii);
    cancel = refuse;
  }
  void ButtonClick(int column) override {
    buttons.push_back(column);
    if (refuse) grid->CancelEdit();
  }
  void HeadClick(int column) override { headings.push_back(column); }
  void Error(int dataError, int& response) override {
    errors.emplace_back(dataError, grid->ErrorText());
    response = 0;
  }
  void OwnerDrawCell(OwnerDrawnCell& cell) override {
    ++ownerDrawn;
    if (ownerDrawThrows) throw std::runtime_error("no brush");
    cell.drawButton = cell.drawButton && ownerDrawsButtons;
  }
  bool CopyProgress(std::int64_t copied, std::int64_t selected) override {
    copies.emplace_back(copied, selected);
    return copied < copyEnds;
  }
  void EditRefused() override { ++refusals; }
  void Undo() override { ++undone; }

  using Written = std::tuple<std::int64_t, int, QString>;  // location, column, text

  TDBGrid* grid = nullptr;
  int reads = 0;
  std::function<void()> onRead;
  std::optional<DataFailure> readFailure;
  std::optional<DataFailure> writeFailure;
  bool refuse = false;
  bool ownerDrawThrows = false;
  bool ownerDrawsButtons = true;
  int ownerDrawn = 0;
  std::vector<std::pair<int, int>> editsAsked;
  std::vector<int> buttons;
  std::vector<int> headings;
  std::vector<std::pair<int, QString>> errors;
  std::vector<Written> written;
  std::vector<std::pair<std::int64_t, std::int64_t>> copies;
  std::int64_t copyEnds = 1'000'000;  // rows after which the copy is given up
  int refusals = 0;
  int undone = 0;
  std::map<std::pair<std::int64_t, int>, CellState> states;  // what differs from the usual
  CellState usualState = CellState::kEdit;
  bool commentOpen = true;

  void SetCount(std::int64_t count) { count_ = count; }

 private:
  void Fill(RowBuffer& rows, int i, std::int64_t row) const {
    rows.SetBookmark(i, row);
    rows.SetValue(i, 0, QString::number(row + 1));
    rows.SetValue(i, 1, QStringLiteral("Muster%1, Max *01.02.1960").arg(row));
    rows.SetValue(i, 2, QString::number(60 + row % 10));
    rows.SetValue(i, 3, row % 2 == 0 ? QStringLiteral("nein") : QString());
    rows.SetValue(i, 4, row % 3 == 0 ? std::optional<QString>() : QStringLiteral("ohne Befund"));
    for (int column = 2; column < 5; ++column) {
      const bool comment = column == 4;
      rows.SetState(i, column, comment && commentOpen ? CellState::kEdit : usualState);
      if (const auto state = states.find({row, column}); state != states.end()) {
        rows.SetState(i, column, state->second);
      }
      if (const auto text = corrected_.find({row, column}); text != corrected_.end()) {
        rows.SetValue(i, column, text->second);
      }
    }
  }

  std::int64_t count_;
  std::map<std::pair<std::int64_t, int>, QString> corrected_;
};

inline std::vector<GridColumn> ExposureColumns() {
  return {{.heading = "Nr.", .width = 60, .alignment = Qt::AlignRight},
          {.heading = "Patient", .width = 220},
          {.heading = "kV", .width = 60, .editable = true, .maxLength = 5},
          {.heading = "Gravidität",
           .width = 110,
           .editable = true,
           .ownerDraw = true,
           .list = {"ja", "nein", "unbekannt"}},
          {.heading = "Bemerkung", .width = 200, .editable = true, .maxLength = 32, .openText = "Jederzeit"}};
}

/// A grid on the screen, worked the way a person does.
class GridTest : public ::testing::Test {
 protected:
  void Shows(std::int64_t count) {
    rows_.SetCount(count);
    rows_.grid = &grid_;
    grid_.SetEvents(&rows_);
    grid_.SetColumns(ExposureColumns());
    grid_.SetStateText(CellState::kLocked, "Gesperrt");
    grid_.SetStateText(CellState::kEdit, "Kann noch geändert werden");
    grid_.SetStateText(CellState::kNoneEdit, "Kann nie geändert werden");
    grid_.resize(700, 400);
    grid_.ReBind(count);
    grid_.show();
    grid_.activateWindow();
    grid_.setFocus();
    Settle();
  }
  void TearDown() override {
    grid_.SetEvents(nullptr);
    grid_.hide();
  }

  static void Settle() {
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  /// To whatever has the focus, as the window system does.
  static void Presses(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
    QWidget* target = QApplication::focusWidget();
    if (QWidget* popup = QApplication::activePopupWidget())
      target = popup->focusWidget() ? popup->focusWidget() : popup;
    ASSERT_NE(target, nullptr);
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(target, &press);
    Settle();
  }
  static void Types(const QString& text) {
    for (const QChar c : text) Presses(c.toUpper().unicode(), Qt::NoModifier, c);
  }
  static void Clicks(QWidget* target, const QPoint& at, QEvent::Type first = QEvent::MouseButtonPress) {
    const QPointF local(at);
    const QPointF global(target->mapToGlobal(at));
    QMouseEvent press(first, local, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QCoreApplication::sendEvent(target, &release);
    Settle();
  }
  [[nodiscard]] QRect CellRect(int row, int column) const {
    return grid_.visualRect(grid_.model()->index(row, column));
  }
  void ClicksCell(int row, int column) { Clicks(grid_.viewport(), CellRect(row, column).center()); }
  void DoubleClicksCell(int row, int column) {
    ClicksCell(row, column);
    Clicks(grid_.viewport(), CellRect(row, column).center(), QEvent::MouseButtonDblClick);
  }
  void ClicksButton(int row, int column) {
    Clicks(grid_.viewport(), ButtonRect(CellRect(row, column)).center());
  }
  void ClicksHeading(int column) {
    QHeaderView& header = *grid_.horizontalHeader();
    Clicks(header.viewport(), {header.sectionViewportPosition(column) + 20, header.height() / 2});
  }
  [[nodiscard]] std::pair<int, int> Current() const { return {grid_.Row(), grid_.Col()}; }

  MadeUpRows rows_{0};
  TDBGrid grid_;
};

using Cell = std::pair<int, int>;

}  // namespace varnlog::ui::test
