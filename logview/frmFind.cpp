#include "logview/frmFind.h"

#include <utility>

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

#include "ui/QtText.h"

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr int kMargin = 4;

}  // namespace

frmFind::frmFind(const core::TextLookup& texts, Events events, QWidget* parent)
    : QWidget(parent),
      texts_(texts),
      events_(std::move(events)),
      txtFind_(new QLineEdit),
      chkAccents_(new QCheckBox(ui::Caption(texts, "FD_ACCENTS"_key))),
      lblCount_(new QLabel) {
  setObjectName("frmFind");
  txtFind_->setObjectName("txtFind");
  txtFind_->setClearButtonEnabled(true);
  txtFind_->setPlaceholderText(ui::Caption(texts, "FD_HINT"_key));
  chkAccents_->setObjectName("chkAccents");
  chkAccents_->setToolTip(ui::Caption(texts, "FD_ACCENTSTIP"_key));
  lblCount_->setObjectName("lblCount");
  auto* label = new QLabel(ui::Caption(texts, "FD_LABEL"_key));
  label->setBuddy(txtFind_);
  auto* close = new QToolButton;
  close->setObjectName("cmdClose");
  close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  close->setAutoRaise(true);
  close->setToolTip(ui::Caption(texts, "FD_CLOSE"_key));
  close->setAccessibleName(close->toolTip());
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  row->addWidget(label);
  row->addWidget(txtFind_, 1);
  row->addWidget(chkAccents_);
  row->addWidget(lblCount_);
  row->addWidget(close);
  const auto changed = [this] { events_.changed(Query()); };
  connect(txtFind_, &QLineEdit::textChanged, this, changed);
  connect(chkAccents_, &QCheckBox::toggled, this, changed);
  connect(txtFind_, &QLineEdit::returnPressed, this, [this] { events_.toRows(); });
  connect(close, &QToolButton::clicked, this, [this] { events_.ended(); });
  hide();
}

void frmFind::Begin() {
  show();
  txtFind_->setFocus(Qt::ShortcutFocusReason);
  txtFind_->selectAll();
}

void frmFind::SetText(const std::string& text) {
  txtFind_->setText(ui::ToQString(text));
}

FindQuery frmFind::Query() const {
  return {.text = ui::FromQString(txtFind_->text()), .accentsMatter = !chkAccents_->isChecked()};
}

void frmFind::ShowCount(std::int64_t found, std::int64_t all, bool complete) {
  QString text = ui::Caption(texts_, "FD_COUNT"_key,
                             {{"lngFound", std::to_string(found)}, {"lngCount", std::to_string(all)}});
  if (!complete) text += QStringLiteral("...");
  lblCount_->setText(Query().IsEmpty() ? QString() : text);
}

void frmFind::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    events_.ended();
  } else if (event->key() == Qt::Key_Down) {
    events_.toRows();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace varnlog::logview
