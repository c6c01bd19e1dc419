#include "inspection/frmInspection.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"

namespace varnlog::inspection {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMostPatients = 50;
constexpr int kUsualPatients = 2;

QDateEdit* NewDay(const char* name, const QDate& day) {
  auto* box = new QDateEdit(day);
  box->setObjectName(name);
  box->setCalendarPopup(true);
  // What is handed over should not leave the century open.
  QString form = box->locale().dateFormat(QLocale::ShortFormat);
  if (!form.contains(QLatin1String("yyyy"))) form.replace(QLatin1String("yy"), QLatin1String("yyyy"));
  box->setDisplayFormat(form);
  return box;
}

platform::DateTime DayOf(const QDateEdit& box) {
  const QDate day = box.date();
  return platform::DateTime::FromSerial(day.year(), day.month(), day.day());
}

}  // namespace

frmInspection::frmInspection(QWidget* parent, const core::TextLookup& texts, platform::DateTime today)
    : QDialog(parent),
      dtpFrom_(NewDay("dtpFrom", {today.Year(), 1, 1})),
      dtpTo_(NewDay("dtpTo", {today.Year(), today.Month(), today.Day()})),
      numPatients_(new QSpinBox),
      cmbProfile_(new QComboBox),
      chkOldestFirst_(new QCheckBox(Caption(texts, "IN_OLDESTFIRST"_key))) {
  setObjectName("frmInspection");
  setWindowTitle(Caption(texts, "IN_CAPTION"_key));
  numPatients_->setObjectName("numPatients");
  numPatients_->setRange(0, kMostPatients);
  numPatients_->setValue(kUsualPatients);
  cmbProfile_->setObjectName("cmbProfile");
  cmbProfile_->addItem(Caption(texts, "IN_AUTHORITY"_key));
  cmbProfile_->addItem(Caption(texts, "IN_QUALITYBODY"_key));
  chkOldestFirst_->setObjectName("chkOldestFirst");

  auto* form = new QFormLayout;
  form->addRow(Caption(texts, "BE_FROM"_key), dtpFrom_);
  form->addRow(Caption(texts, "BE_TO"_key), dtpTo_);
  form->addRow(Caption(texts, "IN_PATIENTS"_key), numPatients_);
  form->addRow(Caption(texts, "IN_FOR"_key), cmbProfile_);
  form->addRow(QString(), chkOldestFirst_);

  auto* buttons = new QDialogButtonBox;
  auto* make = buttons->addButton(Caption(texts, "IN_MAKE"_key), QDialogButtonBox::AcceptRole);
  make->setObjectName("cmdMake");
  make->setDefault(true);
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
}

InspectionOrder frmInspection::Order() const {
  InspectionOrder order;
  order.from = std::min(DayOf(*dtpFrom_), DayOf(*dtpTo_));
  order.to = std::max(DayOf(*dtpFrom_), DayOf(*dtpTo_));
  order.patients = numPatients_->value();
  order.profile = cmbProfile_->currentIndex() == 0 ? Profile::kAuthority : Profile::kQualityBody;
  order.oldestFirst = chkOldestFirst_->isChecked();
  return order;
}

}  // namespace varnlog::inspection
