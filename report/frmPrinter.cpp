#include "report/frmPrinter.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"

namespace varnlog::report {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMostCopies = 999;
constexpr int kMostPages = 999'999;

QSpinBox* NewNumber(const char* name, int most, int value) {
  auto* number = new QSpinBox;
  number->setObjectName(name);
  number->setRange(1, most);
  number->setValue(value);
  number->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  return number;
}

QLabel* NewLabel(const QString& text, QWidget* buddy) {
  auto* label = new QLabel(text);
  label->setBuddy(buddy);
  return label;
}

}  // namespace

frmPrinter::frmPrinter(QWidget* parent, const Printers& printers, const core::TextLookup& texts,
                       PrintChoices& choices)
    : QDialog(parent),
      texts_(texts),
      choices_(choices),
      cmbPrinter_(new QComboBox),
      numCopies_(NewNumber("numCopies", kMostCopies, choices.copies)),
      chkCollate_(new QCheckBox(Caption(texts, "DRS_PRINT_COLLATE"_key))),
      chkEntries_(new QCheckBox(Caption(texts, "DRS_PRINT_ENTRIES"_key))),
      optAll_(new QRadioButton(Caption(texts, "DRS_PRINT_ALL"_key))),
      optRange_(new QRadioButton(Caption(texts, "DRS_PRINT_RANGE"_key))),
      numFrom_(NewNumber("numFrom", kMostPages, choices.from)),
      numTo_(NewNumber("numTo", kMostPages, choices.to)) {
  setObjectName("frmPrinter");
  setWindowTitle(Caption(texts, "DRS_PRINT_CAPTION"_key));
  cmbPrinter_->setObjectName("cmbPrinter");
  chkCollate_->setObjectName("chkCollate");
  chkEntries_->setObjectName("chkEntries");
  chkEntries_->setChecked(choices.withEntries);
  optAll_->setObjectName("optAll");
  optRange_->setObjectName("optRange");
  chkCollate_->setChecked(choices.collate);
  (choices.allPages ? optAll_ : optRange_)->setChecked(true);

  auto* buttons = new QDialogButtonBox;
  auto* cmdOK = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  cmdOK->setObjectName("cmdOK");
  cmdOK->setDefault(true);
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPrinter::Ok);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(PrinterRows(printers));
  layout->addSpacing(12);
  layout->addLayout(PageRows());
  layout->addSpacing(12);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  EnableDependent();
}

QLayout* frmPrinter::PrinterRows(const Printers& printers) {
  for (const QString& name : printers.Names()) cmbPrinter_->addItem(name);
  cmbPrinter_->setCurrentText(ChoosePrinter(printers, ui::ToQString(choices_.printer)));
  connect(numCopies_, &QSpinBox::valueChanged, this, &frmPrinter::EnableDependent);
  auto* rows = new QFormLayout;
  rows->addRow(Caption(texts_, "DRS_PRINT_PRINTER"_key), cmbPrinter_);
  rows->addRow(Caption(texts_, "DRS_PRINT_COPIES"_key), numCopies_);
  rows->addRow(QString(), chkCollate_);
  return rows;
}

QLayout* frmPrinter::PageRows() {
  connect(optAll_, &QRadioButton::toggled, this, &frmPrinter::EnableDependent);
  auto* rows = new QGridLayout;
  rows->addWidget(optAll_, 0, 0, 1, 5);
  rows->addWidget(optRange_, 1, 0);
  rows->addWidget(NewLabel(Caption(texts_, "DRS_PRINT_FROM"_key), numFrom_), 1, 1);
  rows->addWidget(numFrom_, 1, 2);
  rows->addWidget(NewLabel(Caption(texts_, "DRS_PRINT_TO"_key), numTo_), 1, 3);
  rows->addWidget(numTo_, 1, 4);
  rows->addWidget(chkEntries_, 2, 0, 1, 5);
  rows->setColumnStretch(5, 1);
  return rows;
}

void frmPrinter::EnableDependent() {
  chkCollate_->setEnabled(numCopies_->value() > 1);
  numFrom_->setEnabled(optRange_->isChecked());
  numTo_->setEnabled(optRange_->isChecked());
}

void frmPrinter::Ok() {
  choices_.printer = ui::FromQString(cmbPrinter_->currentText());
  choices_.copies = numCopies_->value();
  choices_.collate = chkCollate_->isChecked();
  choices_.allPages = optAll_->isChecked();
  choices_.withEntries = chkEntries_->isChecked();
  choices_.from = numFrom_->value();
  choices_.to = numTo_->value();
  accept();
}

}  // namespace varnlog::report
