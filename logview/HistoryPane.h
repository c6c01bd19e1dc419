#pragma once

#include <cstdint>
#include <optional>

#include <QDockWidget>
#include <QLabel>
#include <QStackedWidget>
#include <QTreeWidget>

#include "db/dao/DBEngine.h"
#include "logview/HistoryText.h"

namespace varnlog::logview {

/// The history of one exposure: who entered and changed what, when and where, its origin first.
class HistoryPane final : public QDockWidget {
 public:
  /// All three outlive it.
  HistoryPane(const core::TextLookup& texts, const intake::ToothScheme& scheme,
              const platform::ShortDate& shortDate);

  /// Nothing: no exposure is shown. Reads at once; what cannot be read is said in place of the history.
  void Show(dao::Database& log, std::optional<std::int64_t> exposure);
  void Clear();

 private:
  void AddEntries(const std::vector<seals::HistoryEntry>& entries, const std::string& type);
  void ShowNote(const QString& note);

  const core::TextLookup& texts_;
  HistoryText text_;
  QStackedWidget* content_;
  QTreeWidget* lvwHistory_;
  QLabel* lblNote_;
};

}  // namespace varnlog::logview
