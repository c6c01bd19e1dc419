#include "app/Desk.h"

#include <utility>

#include <QCommandLinkButton>

#include "ui/QtText.h"

namespace varnlog::app {

namespace {

constexpr int kCharactersWide = 60;
constexpr int kIconSize = 24;

}  // namespace

Desk::Desk() : title_(new QLabel), choices_(new QVBoxLayout) {
  setObjectName("desk");
  title_->setObjectName("lblDesk");
  title_->setWordWrap(true);
  title_->setTextFormat(Qt::PlainText);
  auto* column = new QVBoxLayout;
  column->addStretch(1);
  column->addWidget(title_);
  column->addSpacing(fontMetrics().height());
  column->addLayout(choices_);
  column->addStretch(2);
  auto* middle = new QWidget;
  middle->setLayout(column);
  middle->setMaximumWidth(fontMetrics().averageCharWidth() * kCharactersWide);
  auto* layout = new QHBoxLayout(this);
  layout->addStretch(1);
  layout->addWidget(middle, 2);
  layout->addStretch(1);
}

void Desk::Offer(const QString& title, std::vector<Choice> choices) {
  title_->setText(title);
  while (const QLayoutItem* item = choices_->takeAt(0)) {
    // The one that was clicked is still at work.
    item->widget()->hide();
    item->widget()->deleteLater();
    delete item;
  }
  setFocusProxy(nullptr);
  for (Choice& choice : choices) {
    auto* button = new QCommandLinkButton(choice.text, choice.description);
    button->setIcon(choice.icon);
    button->setIconSize({kIconSize, kIconSize});
    // Wider than it asks for, it would not be as high as it asks for.
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    button->setToolTip(ui::PlainToolTip(choice.description));  // a long path is cut
    button->setAutoDefault(true);                              // the return key presses it
    button->setAccessibleName(choice.text);
    button->setAccessibleDescription(choice.description);
    connect(button, &QAbstractButton::clicked, this, std::move(choice.run));
    choices_->addWidget(button);
    button->show();  // at once: what cannot be seen takes no focus
    if (focusProxy() == nullptr) setFocusProxy(button);
  }
}

}  // namespace varnlog::app
