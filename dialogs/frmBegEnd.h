#pragma once

#include <array>

#include <QDialog>
#include <QLabel>
#include <QLineEdit>

#include "core/UserDialog.h"
#include "dialogs/Period.h"

namespace varnlog::dialogs {

/// Asks for a period. accepted() means that dBegGl and dEndGl hold it.
class frmBegEnd final : public QDialog {
 public:
  frmBegEnd(QWidget* parent, Period period, const core::TextLookup& texts, core::UserDialog& user);

 private:
  [[nodiscard]] PeriodBoxes Boxes() const;
  void CurrentYear();
  void Ok();
  void ShowHint();

  Period period_;
  const core::TextLookup& texts_;
  core::UserDialog& user_;
  std::array<QLineEdit*, 2> txtDate_{};
  QLabel* lblHint_;
};

}  // namespace varnlog::dialogs
