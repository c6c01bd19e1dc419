#include "dialogs/frmBegEnd.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Messages.h"
#include "ui/QtText.h"

namespace varnlog::dialogs {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

frmBegEnd::frmBegEnd(QWidget* parent, Period period, const core::TextLookup& texts, core::UserDialog& user)
    : QDialog(parent), period_(period), texts_(texts), user_(user), lblHint_(new QLabel) {
  setObjectName("frmBegEnd");
  setWindowTitle(Caption(texts, "BE_CAPTION"_key));

  auto* grid = new QGridLayout;
  QString what = ui::PlainCaption(texts, period_.Command());
  if (const std::string patient = period_.Patient(); !patient.empty()) what += ": " + ui::ToQString(patient);
  auto* lblWhat = new QLabel(what);
  lblWhat->setObjectName("lblWhat");
  lblWhat->setTextFormat(Qt::PlainText);
  const QString hint = Caption(texts, "BE_DATEHINT"_key, {{"strExample", period_.Example()}});
  constexpr TextKey kLabels[] = {"BE_FROM"_key, "BE_TO"_key};
  for (int i = 0; i < 2; ++i) {
    auto* label = new QLabel(Caption(texts, kLabels[i]));
    auto* box = new QLineEdit;
    label->setObjectName(QStringLiteral("lblDate%1").arg(i));
    label->setBuddy(box);
    box->setObjectName(QStringLiteral("txtDate%1").arg(i));
    box->setAccessibleName(ui::PlainCaption(texts, kLabels[i]));
    box->setAccessibleDescription(hint);
    // Room for the longest form, 31.12.2001 00:00:00, in any font.
    box->setMinimumWidth(box->fontMetrics().horizontalAdvance(QStringLiteral("00.00.0000 00:00:00")) + 24);
    grid->addWidget(label, i, 0);
    grid->addWidget(box, i, 1);
    connect(box, &QLineEdit::textChanged, this, &frmBegEnd::ShowHint);
    txtDate_.at(static_cast<std::size_t>(i)) = box;
  }

  auto* cmdCurYear = new QPushButton(Caption(texts, "BE_CURYEAR"_key));
  cmdCurYear->setObjectName("cmdCurYear");
  cmdCurYear->setAutoDefault(false);
  connect(cmdCurYear, &QPushButton::clicked, this, &frmBegEnd::CurrentYear);
  grid->addWidget(cmdCurYear, 0, 2);
  lblHint_->setText(hint);
  lblHint_->setObjectName("lblHint");
  grid->addWidget(lblHint_, 2, 1, 1, 2);
  grid->setColumnStretch(1, 1);

  auto* buttons = new QDialogButtonBox;
  auto* cmdOK = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  auto* cmdCancel = buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole);
  cmdOK->setObjectName("cmdOK");
  cmdOK->setDefault(true);
  cmdCancel->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmBegEnd::Ok);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lblWhat);
  layout->addSpacing(6);
  layout->addLayout(grid);
  layout->addSpacing(12);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

void frmBegEnd::CurrentYear() {
  const PeriodBoxes year = period_.CurrentYear();
  for (std::size_t i = 0; i < year.size(); ++i) txtDate_.at(i)->setText(ui::ToQString(year.at(i)));
}

PeriodBoxes frmBegEnd::Boxes() const {
  PeriodBoxes boxes;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    boxes.at(i) = ui::FromQString(txtDate_.at(i)->text().trimmed());
  }
  return boxes;
}

/// A reversed period is taken as it is entered, but nobody shall wonder afterwards where the exposures are.
void frmBegEnd::ShowHint() {
  lblHint_->setText(period_.IsReversed(Boxes())
                        ? Caption(texts_, "BE_REVERSED"_key)
                        : Caption(texts_, "BE_DATEHINT"_key, {{"strExample", period_.Example()}}));
}

void frmBegEnd::Ok() {
  PeriodBoxes boxes = Boxes();
  const auto problem = period_.Confirm(boxes);
  for (std::size_t i = 0; i < boxes.size(); ++i) txtDate_.at(i)->setText(ui::ToQString(boxes.at(i)));
  if (!problem) {
    accept();
    return;
  }
  core::Messages(user_, texts_).Inform(problem->message, {{"dData", problem->dData}});
  QLineEdit* box = txtDate_.at(static_cast<std::size_t>(problem->focus));
  box->setFocus();
  box->selectAll();
}

}  // namespace varnlog::dialogs
