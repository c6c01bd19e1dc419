#include "app/frmSettings.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/Languages.h"
#include "exports/Separator.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kPathCharacters = 44;
constexpr std::string_view kColors = "GridColors";

/// Without loud colours, and still told apart by everybody.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kCalm = {{
    {"LockedBackColor", "R=240;G=240;B=238"},
    {"LockedForeColor", "R=70;G=70;B=70"},
    {"EditForeColor", "R=0;G=60;B=120"},
    {"EditBackColor", "R=255;G=255;B=255"},
    {"NoneEditBackColor", "R=250;G=244;B=222"},
}};

enum ColorSet : int { kGiven, kCalmSet, kOwn };

}  // namespace

frmSettings::frmSettings(QWidget* parent, const core::TextLookup& texts, core::SettingsStore& ini,
                         const std::string& iniFile)
    : QDialog(parent),
      texts_(texts),
      ini_(ini),
      iniFile_(iniFile),
      txtExport_(new QLineEdit),
      txtBackup_(new QLineEdit) {
  setObjectName("frmSettings");
  setWindowTitle(Caption(texts, "SE_CAPTION"_key));
  cmbLanguage_ = new QComboBox;
  cmbLanguage_->setObjectName("cmbLanguage");
  for (const core::LanguageName& language : core::kLanguages)
    cmbLanguage_->addItem(ui::ToQString(language.name), ui::ToQString(language.code));
  cmbLanguage_->setCurrentIndex(
      cmbLanguage_->findData(ui::ToQString(ini.ReadString("App", "Language", iniFile))));
  cmbLanguage_->setToolTip(Caption(texts, "SE_NEXTSTART"_key));
  AddColors();
  cmbSeparator_ = new QComboBox;
  cmbSeparator_->setObjectName("cmbSeparator");
  cmbSeparator_->addItem(Caption(texts, "SE_SYSTEM"_key), QString());
  cmbSeparator_->addItem(Caption(texts, "SE_SEMICOLON"_key), QStringLiteral("semicolon"));
  cmbSeparator_->addItem(Caption(texts, "SE_COMMA"_key), QStringLiteral("comma"));
  cmbSeparator_->addItem(Caption(texts, "SE_TAB"_key), QStringLiteral("tab"));
  const std::string separator = ini.ReadString(exports::kExportSection, exports::kSeparatorKey, iniFile);
  cmbSeparator_->setCurrentIndex(std::max(cmbSeparator_->findData(ui::ToQString(separator)), 0));

  auto* form = new QFormLayout;
  form->addRow(Caption(texts, "SE_LANGUAGE"_key), cmbLanguage_);
  form->addRow(Caption(texts, "SE_COLORS"_key), cmbColors_);
  form->addRow(Caption(texts, "SE_SEPARATOR"_key), cmbSeparator_);
  const auto folder = [&](core::TextKey label, QLineEdit* box, const char* name, std::string_view section) {
    auto* caption = new QLabel(Caption(texts, label));
    caption->setBuddy(box);
    box->setAccessibleName(ui::PlainCaption(texts, label));
    form->addRow(caption, FolderRow(box, name, section));
  };
  folder("SE_EXPORTS"_key, txtExport_, "txtExport", exports::kExportSection);
  folder("SE_BACKUPS"_key, txtBackup_, "txtBackup", "Backup");

  auto* buttons = new QDialogButtonBox;
  auto* ok = buttons->addButton(Caption(texts, "GL_OK"_key), QDialogButtonBox::AcceptRole);
  ok->setObjectName("cmdOK");
  ok->setDefault(true);
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmSettings::Keep);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
}

void frmSettings::AddColors() {
  cmbColors_ = new QComboBox;
  cmbColors_->setObjectName("cmbColors");
  cmbColors_->addItem(Caption(texts_, "SE_GIVEN"_key));
  cmbColors_->addItem(Caption(texts_, "SE_CALM"_key));
  bool given = true;
  bool calm = true;
  for (const auto& [key, color] : kCalm) {
    const std::string kept = ini_.ReadString(kColors, key, iniFile_);
    given = given && kept.empty();
    calm = calm && kept == color;
  }
  // Colours that somebody chose himself stay as long as no others are chosen here.
  if (!given && !calm) cmbColors_->addItem(Caption(texts_, "SE_OWN"_key));
  cmbColors_->setCurrentIndex(given ? kGiven : calm ? kCalmSet : kOwn);
}

QLayout* frmSettings::FolderRow(QLineEdit* box, const char* name, std::string_view section) {
  box->setObjectName(QLatin1String(name));
  box->setMinimumWidth(fontMetrics().averageCharWidth() * kPathCharacters);
  box->setText(ui::ToQString(ini_.ReadString(section, "Folder", iniFile_)));
  auto* choose = new QPushButton(QStringLiteral("..."));
  choose->setAccessibleName(box->accessibleName() + QStringLiteral(" ..."));
  choose->setAutoDefault(false);
  connect(choose, &QPushButton::clicked, this, [this, box] {
    ui::CFileDialog dialog;
    dialog.SetDialogTitle(texts_.GetText("SE_CAPTION"_key));
    dialog.SetHelpTopic("SE_CAPTION");
    dialog.SetInitDir(ui::FromQString(box->text()));
    if (const auto folder = dialog.ShowFolder(this)) box->setText(ui::ToQString(*folder));
  });
  auto* row = new QHBoxLayout;
  row->addWidget(box, 1);
  row->addWidget(choose);
  return row;
}

void frmSettings::Write(std::string_view section, std::string_view key, std::string_view value) {
  if (!ini_.WriteString(section, key, value, iniFile_)) isKept_ = false;
}

void frmSettings::KeepColors() {
  if (cmbColors_->currentIndex() == kOwn) return;
  const bool calm = cmbColors_->currentIndex() == kCalmSet;
  for (const auto& [key, color] : kCalm) {
    // A key that nobody wrote is not made only to be empty.
    if (calm || !ini_.ReadString(kColors, key, iniFile_).empty())
      Write(kColors, key, calm ? color : std::string_view());
  }
}

void frmSettings::Keep() {
  const auto keep = [this](std::string_view section, std::string_view key, const QString& value) {
    const std::string text = ui::FromQString(value.trimmed());
    if (text != ini_.ReadString(section, key, iniFile_)) Write(section, key, text);
  };
  if (cmbLanguage_->currentIndex() >= 0) keep("App", "Language", cmbLanguage_->currentData().toString());
  KeepColors();
  keep(exports::kExportSection, exports::kSeparatorKey, cmbSeparator_->currentData().toString());
  keep(exports::kExportSection, "Folder", txtExport_->text());
  keep("Backup", "Folder", txtBackup_->text());
  accept();
}

}  // namespace varnlog::app
