#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "core/Messages.h"
#include "dialogs/PatientSearch.h"

namespace varnlog::dialogs {

/// Finds one patient of the log. accepted() means that the patient globals hold the choice.
class frmPatSearch final : public QDialog {
 public:
  frmPatSearch(QWidget* parent, PatientSearch search, const core::TextLookup& texts, core::UserDialog& user);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void BuildSearchRow();
  void BuildList();
  void Search();
  void Ok();
  void TextEdited();
  void Choose(const QTreeWidgetItem* item);
  void Show(const SearchResult& result, const QString& searchText);
  void ReportError(const dao::EngineError& error);

  PatientSearch search_;
  const core::TextLookup& texts_;
  core::UserDialog& user_;
  core::Messages messages_;
  QLineEdit* txtSearch_;
  QPushButton* cmdSearch_;
  QTreeWidget* lvwPat_;
  QLabel* lblCount_;
  QPushButton* cmdOK_;
  QString selected_;  // empty when no list entry is chosen
};

}  // namespace varnlog::dialogs
