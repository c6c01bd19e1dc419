#pragma once

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>

#include "core/SettingsStore.h"
#include "core/TextLookup.h"

namespace varnlog::app {

/// The settings of this workstation that have no place of their own in the program. accepted() means that
/// they are kept; the language holds from the next start on.
class frmSettings final : public QDialog {
 public:
  frmSettings(QWidget* parent, const core::TextLookup& texts, core::SettingsStore& ini,
              const std::string& iniFile);

  /// False when what was chosen could not be written.
  [[nodiscard]] bool IsKept() const { return isKept_; }

 private:
  void AddColors();
  [[nodiscard]] QLayout* FolderRow(QLineEdit* box, const char* name, std::string_view section);
  void Write(std::string_view section, std::string_view key, std::string_view value);
  void Keep();
  void KeepColors();

  const core::TextLookup& texts_;
  core::SettingsStore& ini_;
  const std::string& iniFile_;
  bool isKept_ = true;
  QComboBox* cmbLanguage_;
  QComboBox* cmbColors_;
  QComboBox* cmbSeparator_;
  QLineEdit* txtExport_;
  QLineEdit* txtBackup_;
};

}  // namespace varnlog::app
