#pragma once

#include <QLineEdit>
#include <QSplitter>
#include <QTabWidget>
#include <QTextBrowser>
#include <QToolBar>
#include <QWidget>

#include "app/HelpCollection.h"
#include "app/HelpSearchPane.h"
#include "core/TextLookup.h"

namespace varnlog::app {

/// The help's own window: contents, index and search on the left, the page on the right. `help` outlives it.
class frmHelp final : public QWidget {
 public:
  frmHelp(HelpCollection& help, const core::TextLookup& texts);

  /// The contents with the first page.
  void ShowContents();
  /// The index, ready for a keyword.
  void ShowIndex();
  /// The search, ready for words.
  void ShowSearch();
  void ShowPage(const QString& name);

 private:
  void BuildToolbar();
  QAction* AddCommand(const char* name, const char* icon, core::TextKey key, const QKeySequence& shortcut);
  void AddKey(const QKeySequence& key, std::function<void()> run);
  [[nodiscard]] QWidget* ContentsPane();
  [[nodiscard]] QWidget* IndexPane();
  void Zoom(int steps);
  void ResetZoom();
  /// Marks the page that is shown in the contents.
  void MarkInContents();
  /// Makes room for the longest title, within half of the window.
  void FitContents();
  void Highlight(const QStringList& words);
  void SwitchPane();

  HelpCollection& help_;
  const core::TextLookup& texts_;
  QToolBar* toolbar_;
  QTabWidget* tabs_;
  QTextBrowser* page_;
  QSplitter* splitter_;
  QLineEdit* keyword_ = nullptr;
  HelpSearchPane* search_ = nullptr;
  int zoom_ = 0;
};

}  // namespace varnlog::app
