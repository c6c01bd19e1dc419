#pragma once

#include <memory>

#include <QHelpEngine>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

namespace varnlog::app {

/// A help file that is open. What Qt writes while it reads one (its list of help files, the words for the
/// full-text search) goes into a temporary folder of this object, so that neither a read-only program folder
/// nor a second program is in the way.
class HelpCollection {
 public:
  /// nullptr when the file is missing or no help file.
  [[nodiscard]] static std::unique_ptr<HelpCollection> Open(const QString& file);

  [[nodiscard]] QHelpEngine& Engine() { return engine_; }

  /// The address of a page by the name of its source, such as "update".
  [[nodiscard]] static QUrl Page(const QString& name);

 private:
  explicit HelpCollection(std::unique_ptr<QTemporaryDir> folder);

  std::unique_ptr<QTemporaryDir> folder_;
  QHelpEngine engine_;
};

/// The words of what a person typed, without anything that a search language would take for its own.
[[nodiscard]] QStringList SearchWords(const QString& text);

/// Looks for pages that have all the words, each as the beginning of a word.
[[nodiscard]] QString SearchQuery(const QStringList& words);

}  // namespace varnlog::app
