#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialog>
#include <QSpinBox>

#include "core/TextLookup.h"
#include "inspection/InspectionFolder.h"

namespace varnlog::inspection {

/// Asks for the period of an inspection folder and what it is to hold. accepted() means that Order() is
/// complete but for the folder that it is to be made in.
class frmInspection final : public QDialog {
 public:
  frmInspection(QWidget* parent, const core::TextLookup& texts, platform::DateTime today);

  [[nodiscard]] InspectionOrder Order() const;

 private:
  QDateEdit* dtpFrom_;
  QDateEdit* dtpTo_;
  QSpinBox* numPatients_;
  QComboBox* cmbProfile_;
  QCheckBox* chkOldestFirst_;
};

}  // namespace varnlog::inspection
