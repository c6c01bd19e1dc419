#pragma once

#include <functional>

#include <QCheckBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include "core/Globals.h"
#include "start/RepairLog.h"
#include "start/StartUp.h"

namespace varnlog::app {

/// What the properties dialog needs of the main window.
struct PropertiesHost {
  /// Closes the log so that its file can be worked on; false when the user keeps it open.
  std::function<bool()> closeLog;
  /// Opens it again and shows it.
  std::function<void()> reopenLog;
};

/// The open log's file and the program's own switches, with compacting and repairing of the file.
class frmProperties final : public QDialog {
 public:
  frmProperties(QWidget* parent, core::Globals& globals, const start::Services& services,
                PropertiesHost host);

 private:
  enum class Job { kCompact, kRepair };

  [[nodiscard]] QWidget* FileTab();
  [[nodiscard]] QWidget* ProgramTab();
  QLabel* AddFact(QFormLayout* form, core::TextKey label, const char* name);
  void ShowFacts();
  void ShowServer();
  void SetReadOnly(bool readOnly);
  void Work(Job job);
  /// Compacts or repairs and returns how the result is told once the log is open again.
  [[nodiscard]] std::function<void()> RunJob(Job job);
  void ReportCompaction(const std::string& error, std::uint64_t before);
  void ReportRepair(const start::LogRepair& repair);
  [[nodiscard]] QString SizeText(std::uint64_t bytes) const;

  core::Globals& globals_;
  start::Services services_;
  PropertiesHost host_;
  QLabel* path_ = nullptr;
  QLabel* version_ = nullptr;
  QLabel* size_ = nullptr;
  QLabel* rows_ = nullptr;
  QLabel* retention_ = nullptr;
  QLabel* server_ = nullptr;
  QLabel* connected_ = nullptr;
  QCheckBox* readOnly_ = nullptr;
  QPushButton* compact_ = nullptr;
  QPushButton* repair_ = nullptr;
  QLabel* running_ = nullptr;
  QProgressBar* progress_ = nullptr;
};

}  // namespace varnlog::app
