#include "ui/SaveFolder.h"

#include <QDir>
#include <QStandardPaths>

#include "ui/QtText.h"

namespace varnlog::ui {

std::string SaveFolder::Last() const {
  const QString last = ToQString(ini_.ReadString(section_, key_, iniFile_));
  if (!last.isEmpty() && QDir(last).exists()) return FromQString(last);
  return FromQString(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

void SaveFolder::Keep(std::string_view folder) {
  ini_.WriteString(section_, key_, folder, iniFile_);
}

std::string FileNameFor(std::string_view title, std::string_view ending) {
  constexpr std::string_view kNotInFileNames = "/\\:*?\"<>|";
  std::string name(title);
  for (char& c : name) {
    if (kNotInFileNames.find(c) != std::string_view::npos) c = ' ';
  }
  return FromQString(ToQString(name).simplified()).append(ending);
}

}  // namespace varnlog::ui
