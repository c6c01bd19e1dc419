#pragma once

#include <array>

#include <QDialog>
#include <QLineEdit>

#include "db/UserDialog.h"
#include "dialogs/Period.h"

namespace varnlog::dialogs {

/// Asks for a period. accepted() means that dBegGl and dEndGl hold it.
class frmBegEnd final : public QDialog {
 public:
  frmBegEnd(QWidget* parent, Period period, const db::TextLookup& texts, db::UserDialog& user);

 private:
  void CurrentYear();
  void Ok();

  Period period_;
  const db::TextLookup& texts_;
  db::UserDialog& user_;
  std::array<QLineEdit*, 2> txtDate_{};
};

}  // namespace varnlog::dialogs
