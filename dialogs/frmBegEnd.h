#pragma once

#include <array>

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include "core/UserDialog.h"
#include "dialogs/Period.h"

namespace varnlog::dialogs {

/// Asks for a period. accepted() means that dBegGl and dEndGl hold it.
class frmBegEnd final : public QDialog {
 public:
  frmBegEnd(QWidget* parent, Period period, const core::TextLookup& texts, core::UserDialog& user);

 private:
  [[nodiscard]] PeriodBoxes Boxes() const;
  void Fill(const PeriodBoxes& boxes);
  [[nodiscard]] QComboBox* UsualPeriods();
  [[nodiscard]] QToolButton* CalendarFor(QLineEdit* box);
  void Ok();
  void ShowHint();

  Period period_;
  const core::TextLookup& texts_;
  core::UserDialog& user_;
  std::array<QLineEdit*, 2> txtDate_{};
  QLabel* lblHint_;
};

}  // namespace varnlog::dialogs
