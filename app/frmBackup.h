#pragma once

#include <functional>
#include <vector>

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>

#include "app/BackupJob.h"
#include "app/frmProperties.h"
#include "backup/Backup.h"
#include "backup/Schedule.h"
#include "platform/ShortDate.h"

namespace varnlog::app {

/// Where copies of the log go and which of them there are; makes one now, and gives the log the content of
/// one. Settings are kept when it closes.
class frmBackup final : public QDialog {
 public:
  /// `host` closes and reopens the log for restoring.
  frmBackup(QWidget* parent, core::Globals& globals, const start::Services& services,
            const platform::ShortDate& shortDate, PropertiesHost host);
  ~frmBackup() override;

  /// While a copy is being made the dialog stays.
  void reject() override;

 private:
  [[nodiscard]] QLayout* FolderRow();
  [[nodiscard]] QLayout* KeepRows();
  [[nodiscard]] QLayout* Buttons();
  [[nodiscard]] backup::Settings Settings() const;
  void ShowBackups();
  void ChooseFolder();
  void MakeNow();
  void Made(bool made, const std::string& said);
  void SetRunning(bool running);
  void RestoreChosen();
  [[nodiscard]] bool AskAndRestore(const backup::Backup& copy);
  [[nodiscard]] backup::Content ContentOfLog();

  core::Globals& globals_;
  start::Services services_;
  const platform::ShortDate& shortDate_;
  PropertiesHost host_;
  BackupJob job_;
  std::vector<backup::Backup> backups_;
  QLineEdit* txtFolder_;
  QSpinBox* numCount_;
  QSpinBox* numDays_;
  QTreeWidget* lstBackups_;
  QProgressBar* prgBar_;
  QPushButton* cmdChoose_;
  QPushButton* cmdNow_;
  QPushButton* cmdRestore_;
};

}  // namespace varnlog::app
