#pragma once

#include <functional>

#include <QHelpSearchEngine>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QWidget>

#include "core/TextLookup.h"

namespace varnlog::app {

/// The search in the text of all help pages: finds while the words are being typed.
class HelpSearchPane final : public QWidget {
 public:
  /// Shows a page that was found and the words it was found by.
  using Open = std::function<void(const QUrl& page, const QStringList& words)>;

  HelpSearchPane(QHelpSearchEngine& engine, const core::TextLookup& texts, Open open);

 private:
  void Search();
  void ShowResults(int count);
  void OpenPage(const QListWidgetItem* item);

  QHelpSearchEngine& engine_;
  const core::TextLookup& texts_;
  Open open_;
  QLineEdit* words_;
  QLabel* found_;
  QListWidget* results_;
  bool indexed_ = false;  // the engine finds nothing before it has read the pages
};

}  // namespace varnlog::app
