#pragma once

#include <string>
#include <vector>

#include <QDialog>
#include <QTabWidget>

#include "charts/Chart.h"
#include "core/Messages.h"
#include "core/SettingsStore.h"
#include "report/PrintCommands.h"

namespace varnlog::statistics {

/// What the statistics' window works with; all of it outlives the window.
struct StatisticsContext {
  const core::TextLookup& texts;
  core::UserDialog& user;
  core::SettingsStore& ini;
  const std::string& iniFile;
  const std::string& log;  // whoever may read this file may read what is saved
  report::PrintCommands& print;
};

/// Shows charts, each above the table of its numbers, prints them and saves them.
class frmStatistics final : public QDialog {
 public:
  /// `headline` says of which exposures they are.
  frmStatistics(QWidget* parent, const StatisticsContext& context, std::vector<charts::Page> pages,
                const std::string& headline, const std::string& summary);

 private:
  [[nodiscard]] QWidget* NewTab(const charts::Page& page);
  [[nodiscard]] const charts::Page& CurrentPage() const;
  void Print();
  void Save();
  [[nodiscard]] std::string ContentFor(const std::string& file) const;

  StatisticsContext context_;
  std::vector<charts::Page> pages_;
  std::string title_;
  QTabWidget* tabs_;
};

}  // namespace varnlog::statistics
