#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <QStringList>
#include <QWidget>

namespace varnlog::ui {

/// "Text|*.mdb;*.md0|All files|*.*" as the filters of the window system's dialog; "*.*" means every file,
/// with or without a dot. A text without patterns is left out.
[[nodiscard]] QStringList NameFilters(std::string_view filter);

/// The dialog for opening or saving a file. Set what it shows, then ShowOpen() or ShowSave().
class CFileDialog {
 public:
  void SetInitDir(std::string_view folder) { initDir_ = folder; }
  void SetDialogTitle(std::string_view title) { title_ = title; }
  /// Pairs of text and patterns, all separated by "|".
  void SetFilter(std::string_view filter) { filter_ = filter; }
  /// Added to a name typed without an extension; without a dot.
  void SetDefaultExt(std::string_view extension) { defaultExt_ = extension; }
  /// The name proposed.
  void SetFileName(std::string_view name) { fileName_ = name; }

  /// What F1 in the dialog is about: the key of one of its texts.
  void SetHelpTopic(std::string_view textKey) { helpTopic_ = textKey; }

  [[nodiscard]] const std::string& InitDir() const { return initDir_; }
  [[nodiscard]] const std::string& FileName() const { return fileName_; }

  /// The full path of an existing file, or nothing when the user cancelled.
  [[nodiscard]] std::optional<std::string> ShowOpen(QWidget* parent) const;
  /// The full path to write to; the user has agreed to overwrite a file that exists.
  [[nodiscard]] std::optional<std::string> ShowSave(QWidget* parent) const;

  /// The full path of an existing folder.
  [[nodiscard]] std::optional<std::string> ShowFolder(QWidget* parent) const;

  /// From now on `script` answers all file dialogs instead of the user; an empty one ends that.
  using Script = std::function<std::optional<std::string>(const CFileDialog&)>;
  static void AnswerWith(Script script);

 private:
  enum class Mode { kOpen, kSave, kFolder };
  [[nodiscard]] std::optional<std::string> Show(QWidget* parent, Mode mode) const;

  std::string initDir_;
  std::string title_;
  std::string filter_;
  std::string defaultExt_;
  std::string fileName_;
  std::string helpTopic_;
};

}  // namespace varnlog::ui
