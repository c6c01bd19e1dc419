#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

#include "core/Messages.h"
#include "dialogs/PatientSearch.h"

namespace varnlog::dialogs {

/// Finds one patient of the log. accepted() means that the patient globals hold the choice.
class frmPatSearch final : public QDialog {
 public:
  /// `first` is the patient that is proposed first; "" for none.
  frmPatSearch(QWidget* parent, PatientSearch search, const core::TextLookup& texts, core::UserDialog& user,
               const std::string& first = {});

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void BuildSearchRow();
  void BuildList();
  void Search();
  void Ok();
  void TextEdited();
  /// Finds what was typed so far; what finds nothing yet is no reason for a message.
  void SearchWhileTyping();
  void List(const std::vector<std::string>& entries);
  void Propose(const std::string& first);
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
  QTimer typed_;
  QString selected_;  // empty when no list entry is chosen
};

}  // namespace varnlog::dialogs
