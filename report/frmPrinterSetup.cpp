#include "report/frmPrinterSetup.h"

#include <algorithm>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"

namespace varnlog::report {

using core::literals::operator""_key;
using ui::Caption;

frmPrinterSetup::frmPrinterSetup(QWidget* parent, const Printers& printers, const core::TextLookup& texts,
                                 const QString& printer, const QPageSize& paper)
    : QDialog(parent), printers_(printers), cmbPrinter_(new QComboBox), cmbPaper_(new QComboBox) {
  setObjectName("frmPrinterSetup");
  setWindowTitle(Caption(texts, "DRS_SETUP_CAPTION"_key));
  cmbPrinter_->setObjectName("cmbPrinter");
  cmbPaper_->setObjectName("cmbPaper");
  for (const QString& name : printers.Names()) cmbPrinter_->addItem(name);
  cmbPrinter_->setCurrentText(ChoosePrinter(printers, printer));
  ListPapers(paper);
  connect(cmbPrinter_, &QComboBox::currentTextChanged, this, [this] { ListPapers(Paper()); });

  auto* buttons = new QDialogButtonBox;
  auto* cmdOK = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  cmdOK->setObjectName("cmdOK");
  cmdOK->setDefault(true);
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* rows = new QFormLayout;
  rows->addRow(Caption(texts, "DRS_SETUP_PRINTER"_key), cmbPrinter_);
  rows->addRow(Caption(texts, "DRS_SETUP_PAPER"_key), cmbPaper_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(rows);
  layout->addSpacing(12);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

/// The printer's own, with the paper that is chosen among them whatever the printer says.
void frmPrinterSetup::ListPapers(const QPageSize& chosen) {
  papers_ = printers_.Papers(Printer());
  if (papers_.empty()) papers_ = {QPageSize(QPageSize::A4), QPageSize(QPageSize::Letter)};
  const auto same = [&chosen](const QPageSize& paper) { return paper.isEquivalentTo(chosen); };
  auto current = std::ranges::find_if(papers_, same);
  if (current == papers_.end()) current = papers_.insert(papers_.begin(), chosen);
  const auto index = static_cast<int>(current - papers_.begin());
  cmbPaper_->clear();
  for (const QPageSize& paper : papers_) cmbPaper_->addItem(paper.name());
  cmbPaper_->setCurrentIndex(index);
}

QPageSize frmPrinterSetup::Paper() const {
  const auto index = static_cast<std::size_t>(std::max(cmbPaper_->currentIndex(), 0));
  return papers_.at(index);
}

}  // namespace varnlog::report
