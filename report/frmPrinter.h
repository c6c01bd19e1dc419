#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QRadioButton>
#include <QSpinBox>

#include "core/TextLookup.h"
#include "report/PrintChoices.h"
#include "report/Printers.h"

namespace varnlog::report {

/// Asks for printer, copies and pages. accepted() means that the choices hold what was chosen.
class frmPrinter final : public QDialog {
 public:
  /// Shows `choices` as they are and keeps a reference to them.
  frmPrinter(QWidget* parent, const Printers& printers, const core::TextLookup& texts, PrintChoices& choices);
  /// Whether what was entered later can be printed as well; unless said otherwise it can.
  void OfferEntries(bool offered) { chkEntries_->setVisible(offered); }

 private:
  [[nodiscard]] QLayout* PrinterRows(const Printers& printers);
  [[nodiscard]] QLayout* PageRows();
  void EnableDependent();
  void Ok();

  const core::TextLookup& texts_;
  PrintChoices& choices_;
  QComboBox* cmbPrinter_;
  QSpinBox* numCopies_;
  QCheckBox* chkCollate_;
  QCheckBox* chkEntries_;
  QRadioButton* optAll_;
  QRadioButton* optRange_;
  QSpinBox* numFrom_;
  QSpinBox* numTo_;
};

}  // namespace varnlog::report
