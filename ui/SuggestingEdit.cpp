#include "ui/SuggestingEdit.h"

#include <algorithm>

#include <QKeyEvent>

namespace varnlog::ui {

namespace {

constexpr int kMostShown = 8;

/// A word of the suggestion begins so.
bool GoesOnLike(const QString& suggestion, const QString& typed) {
  if (suggestion.startsWith(typed, Qt::CaseInsensitive)) return true;
  return suggestion.contains(QLatin1Char(' ') + typed, Qt::CaseInsensitive);
}

}  // namespace

SuggestingEdit::SuggestingEdit(QStringList suggestions, QWidget* parent)
    : QLineEdit(parent), suggestions_(std::move(suggestions)) {
  connect(this, &QLineEdit::textEdited, this, &SuggestingEdit::Offer);
}

SuggestingEdit::~SuggestingEdit() {
  delete list_;
}

QStringList SuggestingEdit::Shown() const {
  QStringList shown;
  for (int i = 0; list_ && list_->isVisible() && i < list_->count(); ++i) shown << list_->item(i)->text();
  return shown;
}

void SuggestingEdit::Offer(const QString& typed) {
  QStringList fitting;
  for (const QString& suggestion : suggestions_) {
    if (fitting.size() < kMostShown && suggestion != typed && GoesOnLike(suggestion, typed))
      fitting << suggestion;
  }
  if (fitting.isEmpty()) {
    if (list_) list_->hide();
    return;
  }
  if (!list_) {
    // A tool tip's window takes neither focus nor keys.
    list_ = new QListWidget(this);
    list_->setWindowFlags(Qt::ToolTip);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setAccessibleName(accessibleName());
    connect(list_, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
      setText(item->text());
      list_->hide();
    });
  }
  list_->clear();
  list_->addItems(fitting);
  const int wanted = list_->sizeHintForColumn(0) + 2 * list_->frameWidth();
  list_->setFixedSize(std::max(width(), wanted),
                      list_->sizeHintForRow(0) * list_->count() + 2 * list_->frameWidth());
  list_->move(mapToGlobal(QPoint(0, height())));
  list_->show();
}

void SuggestingEdit::Step(int step) {
  const int rows = list_->count();
  const int row =
      list_->currentRow() < 0 ? (step > 0 ? 0 : rows - 1) : (list_->currentRow() + step + rows) % rows;
  list_->setCurrentRow(row);
  setText(list_->item(row)->text());
}

void SuggestingEdit::keyPressEvent(QKeyEvent* event) {
  const bool isArrow = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
  if (!isArrow) return QLineEdit::keyPressEvent(event);
  event->accept();
  if (!list_ || !list_->isVisible()) Offer(text());
  if (list_ && list_->isVisible()) Step(event->key() == Qt::Key_Down ? 1 : -1);
}

void SuggestingEdit::hideEvent(QHideEvent* event) {
  if (list_) list_->hide();
  QLineEdit::hideEvent(event);
}

void SuggestingEdit::focusOutEvent(QFocusEvent* event) {
  if (list_) list_->hide();
  QLineEdit::focusOutEvent(event);
}

}  // namespace varnlog::ui
