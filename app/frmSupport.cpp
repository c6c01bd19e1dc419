#include "app/frmSupport.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kCharacters = 90;
constexpr int kLines = 17;

}  // namespace

frmSupport::frmSupport(QWidget* parent, const core::TextLookup& texts, const std::string& information)
    : QDialog(parent) {
  setObjectName("frmSupport");
  setWindowTitle(Caption(texts, "AB_SUPPORT"_key));
  auto* label = new QLabel(Caption(texts, "AB_SUPPORTTEXT"_key));
  label->setWordWrap(true);
  auto* text = new QPlainTextEdit(ui::ToQString(information));
  text->setObjectName("txtSupport");
  text->setReadOnly(true);
  text->setTabChangesFocus(true);
  text->setAccessibleName(windowTitle());
  text->setMinimumSize(fontMetrics().averageCharWidth() * kCharacters, fontMetrics().lineSpacing() * kLines);
  label->setBuddy(text);
  auto* buttons = new QDialogButtonBox;
  auto* copy = buttons->addButton(Caption(texts, "AB_COPY"_key), QDialogButtonBox::ActionRole);
  copy->setObjectName("cmdCopy");
  copy->setDefault(true);
  connect(copy, &QPushButton::clicked, text,
          [text] { QApplication::clipboard()->setText(text->toPlainText()); });
  buttons->addButton(Caption(texts, "GL_CLOSE"_key), QDialogButtonBox::RejectRole)->setObjectName("cmdClose");
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(text, 1);
  layout->addWidget(buttons);
  copy->setFocus();
}

}  // namespace varnlog::app
