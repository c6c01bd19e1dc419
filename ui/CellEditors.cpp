#include "ui/CellEditors.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QStyledItemDelegate>
#include <QTimer>

namespace varnlog::ui {

namespace {

qsizetype CharacterCount(const QString& text) {
  return text.size() - std::count_if(text.begin(), text.end(), [](QChar c) { return c.isLowSurrogate(); });
}

void BreaksToBlanks(QString& text) {
  std::replace_if(
      text.begin(), text.end(),
      [](QChar c) { return c.category() == QChar::Other_Control || c == QChar::LineSeparator; }, QChar(' '));
}

}  // namespace

LengthLimit::LengthLimit(std::optional<int> characters, QObject* parent)
    : QValidator(parent), characters_(characters) {}

QValidator::State LengthLimit::validate(QString& input, int& position) const {
  BreaksToBlanks(input);
  if (!characters_) return Acceptable;
  for (qsizetype tooMany = CharacterCount(input) - *characters_; tooMany > 0; --tooMany) {
    const qsizetype end = position > 0 ? position : input.size();
    const bool pair = end >= 2 && input.at(end - 1).isLowSurrogate() && input.at(end - 2).isHighSurrogate();
    const qsizetype units = pair ? 2 : 1;
    input.remove(end - units, units);
    if (position > 0) position -= static_cast<int>(units);
  }
  return Acceptable;
}

ListEditor::ListEditor(QWidget* parent) : QComboBox(parent) {
  // Styles that lay the list over its box would hide the cell and its neighbours.
  setStyleSheet(
      QStringLiteral("QComboBox { combobox-popup: 0; } QAbstractItemView::item { min-height: 1.7em; }"));
  setItemDelegate(new QStyledItemDelegate(this));
  connect(this, &QComboBox::activated, this, [this] {
    // Letters typed while the list is closed also arrive here; they only preselect.
    if (list_ == List::kOpen || list_ == List::kClosing) {
      list_ = List::kDone;
      emit Chosen();
    }
  });
}

void ListEditor::showPopup() {
  list_ = List::kOpen;
  view()->setMinimumWidth(view()->sizeHintForColumn(0) + 2 * view()->frameWidth());
  QComboBox::showPopup();
}

void ListEditor::hidePopup() {
  QComboBox::hidePopup();
  if (list_ != List::kOpen) return;
  // The choice, if there is one, is told after the list has closed.
  list_ = List::kClosing;
  QTimer::singleShot(0, this, [this] {
    if (list_ != List::kClosing) return;
    list_ = List::kDone;
    // An editor that was put away takes its list with it; there is nothing left to close.
    if (isVisible()) emit Dismissed();
  });
}

void ListEditor::keyPressEvent(QKeyEvent* event) {
  const bool opens = (event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier)) ||
                     event->key() == Qt::Key_F4;
  if (opens) {
    showPopup();
    event->accept();
    return;
  }
  // The wheel and the arrows of a combo box may change it, but never past the window: the base class does so.
  QComboBox::keyPressEvent(event);
}

}  // namespace varnlog::ui
