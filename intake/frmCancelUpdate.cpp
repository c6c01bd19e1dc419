#include "intake/frmCancelUpdate.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::intake {

using core::literals::operator""_key;
using ui::Caption;

frmCancelUpdate::frmCancelUpdate(QWidget* parent, const core::TextLookup& texts) : QDialog(parent) {
  setObjectName("frmCancelUpdate");
  setWindowTitle(Caption(texts, "CU_CAPTION"_key));
  auto* icon = new QLabel;
  icon->setPixmap(ui::MessagePicture(QStringLiteral("Warning"), *this));
  auto* label = new QLabel(Caption(texts, "CU_TEXT"_key) + QLatin1Char(' ') + Caption(texts, "CU_TEXT2"_key));
  label->setObjectName("lblText");
  label->setWordWrap(true);
  label->setMinimumWidth(fontMetrics().averageCharWidth() * 56);

  auto* buttons = new QDialogButtonBox;
  auto* cmdUpdate = buttons->addButton(Caption(texts, "CU_UPDATE"_key), QDialogButtonBox::AcceptRole);
  cmdUpdate->setObjectName("cmdUpdate");
  cmdUpdate->setDefault(true);
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* row = new QHBoxLayout;
  row->setSpacing(16);
  row->addWidget(icon, 0, Qt::AlignTop);
  row->addWidget(label, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(row);
  layout->addSpacing(8);
  layout->addWidget(buttons);
}

}  // namespace varnlog::intake
