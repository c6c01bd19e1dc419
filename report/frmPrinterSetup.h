#pragma once

#include <QComboBox>
#include <QDialog>
#include <QPageSize>

#include "core/TextLookup.h"
#include "report/Printers.h"

namespace varnlog::report {

/// Asks for the printer and its paper; the report is always printed in landscape.
class frmPrinterSetup final : public QDialog {
 public:
  /// `printers` outlives the dialog.
  frmPrinterSetup(QWidget* parent, const Printers& printers, const core::TextLookup& texts,
                  const QString& printer, const QPageSize& paper);

  [[nodiscard]] QString Printer() const { return cmbPrinter_->currentText(); }
  [[nodiscard]] QPageSize Paper() const;

 private:
  void ListPapers(const QPageSize& chosen);

  const Printers& printers_;
  QComboBox* cmbPrinter_;
  QComboBox* cmbPaper_;
  std::vector<QPageSize> papers_;
};

}  // namespace varnlog::report
