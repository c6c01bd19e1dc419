#include "ui/FileDialog.h"

#include <utility>

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QOperatingSystemVersion>
#include <QRegularExpression>
#include <QSplitter>
#include <QTreeView>

#include "ui/HelpTopic.h"
#include "ui/QtText.h"

namespace varnlog::ui {

namespace {

constexpr QSize kDialogSize(760, 440);
constexpr int kPlacesWidth = 140;

CFileDialog::Script& CurrentScript() {
  static CFileDialog::Script script;
  return script;
}

QString Patterns(const QString& list) {
  QStringList patterns = list.split(';', Qt::SkipEmptyParts);
  for (QString& pattern : patterns) {
    pattern = pattern.trimmed();
    if (pattern == "*.*") pattern = "*";
  }
  patterns.removeAll(QString());
  return patterns.join(' ');
}

/// Where Qt draws the dialog itself, it cuts types and times.
void ShowWholeColumns(QFileDialog& dialog) {
  const auto* files = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
  if (files == nullptr) return;
  for (int column = 0; column < files->header()->count(); ++column) {
    files->header()->setSectionResizeMode(column,
                                          column == 0 ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
  }
  dialog.resize(dialog.sizeHint().expandedTo(kDialogSize));
  if (auto* places = dialog.findChild<QSplitter*>()) {
    places->setSizes({kPlacesWidth, kDialogSize.width() - kPlacesWidth});
  }
}

/// Where Qt draws the dialog itself, its lists have no names that could be read out on every system.
void NameLists(QFileDialog& dialog) {
  for (const auto& [list, label] :
       {std::pair(QStringLiteral("lookInCombo"), QStringLiteral("lookInLabel")),
        std::pair(QStringLiteral("fileTypeCombo"), QStringLiteral("fileTypeLabel"))}) {
    auto* const named = dialog.findChild<QWidget*>(list);
    const auto* const name = dialog.findChild<QLabel*>(label);
    if (named != nullptr && name != nullptr) named->setAccessibleName(name->text().remove('&').remove(':'));
  }
}

/// A name gets the ending of the type that is chosen, before the dialog asks whether it may be replaced.
/// Windows' own dialog does that by itself; what it is told to select it shows with its whole path.
void FollowType(QFileDialog& dialog) {
  if (QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Windows) return;
  const auto follow = [&dialog](const QString& filter) {
    static const QRegularExpression kEnding(R"(\(\*\.(\w+)\)$)");
    const QString ending = kEnding.match(filter).captured(1);
    if (ending.isEmpty()) return;
    const QString before = dialog.defaultSuffix();
    dialog.setDefaultSuffix(ending);
    const QString name = QFileInfo(dialog.selectedFiles().value(0)).fileName();
    if (!name.endsWith("." + before, Qt::CaseInsensitive)) return;
    dialog.selectFile(name.chopped(before.size()) + ending);
  };
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, follow);
}

}  // namespace

QStringList NameFilters(std::string_view filter) {
  // The dialog takes the last parentheses for the patterns and shows them with the text.
  static const QRegularExpression kOwnPatterns(R"(\s*\([^()]*\)\s*$)");
  const QStringList parts = ToQString(filter).split('|');
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString patterns = Patterns(parts.at(i + 1));
    if (patterns.isEmpty()) continue;
    QString text = parts.at(i).trimmed();
    text.remove(kOwnPatterns);
    filters << QStringLiteral("%1 (%2)").arg(text, patterns);
  }
  return filters;
}

void CFileDialog::AnswerWith(Script script) {
  CurrentScript() = std::move(script);
}

std::optional<std::string> CFileDialog::ShowOpen(QWidget* parent) const {
  return Show(parent, Mode::kOpen);
}

std::optional<std::string> CFileDialog::ShowSave(QWidget* parent) const {
  return Show(parent, Mode::kSave);
}

std::optional<std::string> CFileDialog::ShowFolder(QWidget* parent) const {
  return Show(parent, Mode::kFolder);
}

std::optional<std::string> CFileDialog::Show(QWidget* parent, Mode mode) const {
  if (CurrentScript()) return CurrentScript()(*this);
  QFileDialog dialog(parent, ToQString(title_));
  dialog.setObjectName("CFileDialog");
  ui::SetHelpTopic(dialog, helpTopic_);
  dialog.setAcceptMode(mode == Mode::kSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(mode == Mode::kOpen     ? QFileDialog::ExistingFile
                     : mode == Mode::kFolder ? QFileDialog::Directory
                                             : QFileDialog::AnyFile);
  // The folder of a file that is gone may be gone too; the dialog then begins where it likes.
  QString folder = ToQString(initDir_);
  folder.replace('\\', '/');
  if (!folder.isEmpty() && QDir(folder).exists()) dialog.setDirectory(folder);
  if (const QStringList filters = NameFilters(filter_); !filters.isEmpty()) dialog.setNameFilters(filters);
  ShowWholeColumns(dialog);
  NameLists(dialog);
  dialog.setDefaultSuffix(ToQString(defaultExt_));
  if (mode == Mode::kSave) FollowType(dialog);
  if (!fileName_.empty()) dialog.selectFile(ToQString(fileName_));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return FromQString(QDir::toNativeSeparators(dialog.selectedFiles().constFirst()));
}

}  // namespace varnlog::ui
