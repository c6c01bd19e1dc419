#include "intake/frmUpdateNotices.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Messages.h"
#include "platform/SafeFile.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"

namespace varnlog::intake {

using core::literals::operator""_key;
using ui::Caption;

frmUpdateNotices::frmUpdateNotices(QWidget* parent, const core::TextLookup& texts, core::UserDialog& user,
                                   const std::vector<std::string>& notices)
    : QDialog(parent), texts_(texts), user_(user) {
  setObjectName("frmUpdateNotices");
  setWindowTitle(Caption(texts, "RU_XRUPDATE"_key));
  for (const std::string& notice : notices) lines_ += notice + '\n';
  auto* label = new QLabel(Caption(texts, "RU_NOTICES"_key));
  label->setWordWrap(true);
  auto* list = new QPlainTextEdit(ui::ToQString(lines_).trimmed());
  list->setObjectName("txtNotices");
  list->setReadOnly(true);
  list->setTabChangesFocus(true);
  list->setAccessibleName(label->text());
  label->setBuddy(list);

  auto* buttons = new QDialogButtonBox;
  QPushButton* cmdSave = buttons->addButton(Caption(texts, "RU_SAVETEXT"_key), QDialogButtonBox::ActionRole);
  cmdSave->setObjectName("cmdSave");
  QPushButton* cmdClose = buttons->addButton(Caption(texts, "GL_CLOSE"_key), QDialogButtonBox::RejectRole);
  cmdClose->setObjectName("cmdClose");
  cmdClose->setDefault(true);
  connect(cmdSave, &QPushButton::clicked, this, &frmUpdateNotices::SaveAsText);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(list, 1);
  layout->addWidget(buttons);
  const int character = fontMetrics().averageCharWidth();
  resize(character * 100, fontMetrics().lineSpacing() * 20);
  cmdClose->setFocus();
}

void frmUpdateNotices::SaveAsText() {
  ui::CFileDialog dialog;
  dialog.SetDialogTitle(texts_.GetText("RU_XRUPDATE"_key));
  dialog.SetFilter(texts_.GetText("RU_TEXTFILTER"_key));
  dialog.SetDefaultExt("txt");
  const auto file = dialog.ShowSave(this);
  if (!file) return;
  const std::error_code error = platform::ReplaceFile(platform::ToPath(*file), lines_);
  if (!error) return;
  core::Messages(user_, texts_)
      .Show({.key = "RU_ERR_SAVETEXT"_key,
             .values = {{"strFile", *file}, {"strError", error.message()}},
             .title = "RU_XRUPDATE"_key});
}

}  // namespace varnlog::intake
