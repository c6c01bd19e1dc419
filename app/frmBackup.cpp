#include "app/frmBackup.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLocale>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "db/modCommon.h"
#include "platform/Files.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMostCopies = 9'999;
constexpr int kMostDays = 9'999;
constexpr int kCharacters = 76;

QSpinBox* NewNumber(const char* name, int most, int value) {
  auto* number = new QSpinBox;
  number->setObjectName(name);
  number->setRange(1, most);
  number->setValue(value);
  return number;
}

QPushButton* NewButton(const core::TextLookup& texts, core::TextKey key, const char* name) {
  auto* button = new QPushButton(Caption(texts, key));
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

frmBackup::frmBackup(QWidget* parent, core::Globals& globals, const start::Services& services,
                     const platform::ShortDate& shortDate, PropertiesHost host)
    : QDialog(parent),
      globals_(globals),
      services_(services),
      shortDate_(shortDate),
      host_(std::move(host)),
      job_(globals),
      txtFolder_(new QLineEdit),
      lstBackups_(new QTreeWidget),
      prgBar_(new QProgressBar),
      cmdChoose_(NewButton(services.texts, "BK_CHOOSE"_key, "cmdChoose")),
      cmdNow_(NewButton(services.texts, "BK_NOW"_key, "cmdNow")),
      cmdRestore_(NewButton(services.texts, "BK_RESTORE"_key, "cmdRestore")) {
  setObjectName("frmBackup");
  setWindowTitle(Caption(services_.texts, "BK_CAPTION"_key));
  const backup::Settings settings = backup::LoadSettings(services_.ini, globals_.IniFileGl);
  numCount_ = NewNumber("numCount", kMostCopies, settings.keep.count);
  numDays_ = NewNumber("numDays", kMostDays, settings.keep.days);
  txtFolder_->setText(ui::ToQString(settings.folder));
  lstBackups_->setObjectName("lstBackups");
  lstBackups_->setAccessibleName(Caption(services_.texts, "BK_COPIES"_key));
  lstBackups_->setRootIsDecorated(false);
  lstBackups_->setHeaderLabels(
      {Caption(services_.texts, "BK_COPIES"_key), Caption(services_.texts, "BK_SIZE"_key)});
  lstBackups_->header()->setSectionsClickable(false);
  prgBar_->setObjectName("prgBar");
  prgBar_->setAccessibleName(windowTitle());
  prgBar_->setRange(0, 0);
  QSizePolicy policy = prgBar_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  prgBar_->setSizePolicy(policy);

  auto* layout = new QVBoxLayout(this);
  auto* hint = new QLabel(Caption(services_.texts, "BK_HINT"_key));
  hint->setWordWrap(true);
  layout->addWidget(hint);
  layout->addLayout(FolderRow());
  layout->addLayout(KeepRows());
  layout->addWidget(lstBackups_, 1);
  layout->addWidget(prgBar_);
  layout->addLayout(Buttons());
  setMinimumWidth(fontMetrics().averageCharWidth() * kCharacters);
  SetRunning(false);
}

frmBackup::~frmBackup() {
  backup::SaveSettings(Settings(), services_.ini, globals_.IniFileGl);
}

backup::Settings frmBackup::Settings() const {
  return {.folder = ui::FromQString(txtFolder_->text().trimmed()),
          .keep = {.count = numCount_->value(), .days = numDays_->value()}};
}

QLayout* frmBackup::FolderRow() {
  txtFolder_->setObjectName("txtFolder");
  auto* label = new QLabel(Caption(services_.texts, "BK_FOLDER"_key));
  label->setBuddy(txtFolder_);
  connect(txtFolder_, &QLineEdit::editingFinished, this, &frmBackup::ShowBackups);
  connect(cmdChoose_, &QPushButton::clicked, this, &frmBackup::ChooseFolder);
  auto* row = new QHBoxLayout;
  row->addWidget(label);
  row->addWidget(txtFolder_, 1);
  row->addWidget(cmdChoose_);
  return row;
}

QLayout* frmBackup::KeepRows() {
  auto* rows = new QFormLayout;
  rows->addRow(Caption(services_.texts, "BK_KEEPCOUNT"_key), numCount_);
  rows->addRow(Caption(services_.texts, "BK_KEEPDAYS"_key), numDays_);
  return rows;
}

QLayout* frmBackup::Buttons() {
  connect(cmdNow_, &QPushButton::clicked, this, &frmBackup::MakeNow);
  connect(cmdRestore_, &QPushButton::clicked, this, &frmBackup::RestoreChosen);
  connect(lstBackups_, &QTreeWidget::currentItemChanged, this, [this] { SetRunning(job_.IsRunning()); });
  auto* close = NewButton(services_.texts, "GL_CLOSE"_key, "cmdClose");
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &frmBackup::reject);
  auto* row = new QHBoxLayout;
  row->addWidget(cmdNow_);
  row->addWidget(cmdRestore_);
  row->addStretch(1);
  row->addWidget(close);
  return row;
}

void frmBackup::ShowBackups() {
  backups_ =
      backup::ListBackups(platform::ToPath(Settings().folder), platform::ToPath(globals_.strDataFileGl));
  lstBackups_->clear();
  for (const backup::Backup& copy : backups_) {
    auto* item = new QTreeWidgetItem(lstBackups_);
    item->setText(0, ui::ToQString(shortDate_.FormatGeneral(copy.taken)));
    item->setText(1, QLocale().formattedDataSize(static_cast<qint64>(copy.bytes), 1,
                                                 QLocale::DataSizeTraditionalFormat));
    item->setToolTip(0, ui::PlainToolTip(ui::ToQString(platform::FromPath(copy.path))));
  }
  lstBackups_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  lstBackups_->header()->setStretchLastSection(false);
  if (!backups_.empty()) lstBackups_->setCurrentItem(lstBackups_->topLevelItem(0));
}

void frmBackup::ChooseFolder() {
  ui::CFileDialog dialog;
  dialog.SetDialogTitle(services_.texts.GetText("BK_CAPTION"_key));
  dialog.SetHelpTopic("BK_CAPTION");
  dialog.SetInitDir(Settings().folder);
  if (const auto folder = dialog.ShowFolder(this)) txtFolder_->setText(ui::ToQString(*folder));
  SetRunning(false);
}

void frmBackup::SetRunning(bool running) {
  prgBar_->setVisible(running);
  const bool hasLog = globals_.LogEngineGl && globals_.LogEngineGl->Database();
  txtFolder_->setEnabled(!running);
  cmdChoose_->setEnabled(!running);
  cmdNow_->setEnabled(!running && hasLog);
  if (!running && lstBackups_->topLevelItemCount() == 0) ShowBackups();
  cmdRestore_->setEnabled(!running && lstBackups_->currentItem() != nullptr);
}

void frmBackup::reject() {
  if (!job_.IsRunning()) QDialog::reject();
}

void frmBackup::MakeNow() {
  const backup::Settings settings = Settings();
  if (settings.folder.empty()) {
    services_.Messages().Inform("BK_ERR_NOFOLDER"_key);
    return txtFolder_->setFocus();
  }
  backup::SaveSettings(settings, services_.ini, globals_.IniFileGl);
  if (job_.Start(settings.folder, [this](bool made, const std::string& said) { Made(made, said); }))
    SetRunning(true);
}

void frmBackup::Made(bool made, const std::string& said) {
  ShowBackups();
  SetRunning(false);
  if (made) {
    services_.Messages().Inform("BK_DONE"_key, {{"strFile", said}});
  } else {
    services_.Messages().ShowText(said);
  }
}

/// A log that is gone or cannot be read is a reason to restore one.
backup::Content frmBackup::ContentOfLog() {
  try {
    return backup::ReadContent(*globals_.LogEngineGl, platform::ToPath(globals_.strDataFileGl));
  } catch (const dao::EngineError&) {
    return {};
  }
}

/// Names both, so that nobody takes one for the other.
bool frmBackup::AskAndRestore(const backup::Backup& copy) {
  db::CJetEngine& engine = *globals_.LogEngineGl;
  const core::Messages messages = services_.Messages();
  const std::string file = platform::FromPath(copy.path);
  if (!backup::CheckBackup(engine, copy.path).empty()) {
    messages.Critical("BK_ERR_UNSOUND"_key, {{"strFile", file}});
    return false;
  }
  const auto day = [this](platform::DateTime newest) {
    return newest.IsSet() ? shortDate_.Format(newest) : std::string("-");
  };
  const backup::Content before = ContentOfLog();
  const backup::Content after = backup::ReadContent(engine, copy.path);
  const auto answer = messages.Show({.key = "BK_QUESTION"_key,
                                     .values = {{"strFile", globals_.strDataFileGl},
                                                {"lngOld", std::to_string(before.exposures)},
                                                {"dOld", day(before.newest)},
                                                {"strBackup", file},
                                                {"lngNew", std::to_string(after.exposures)},
                                                {"dNew", day(after.newest)}},
                                     .icon = core::MessageIcon::kQuestion,
                                     .buttons = core::MessageButtons::kYesNo,
                                     .lastIsDefault = true});
  if (answer != core::MessageAnswer::kYes) return false;
  (void)backup::Restore(engine, copy.path, platform::ToPath(globals_.strDataFileGl));
  return true;
}

void frmBackup::RestoreChosen() {
  const int chosen = lstBackups_->indexOfTopLevelItem(lstBackups_->currentItem());
  if (chosen < 0 || !host_.closeLog()) return;
  const backup::Backup copy = backups_[static_cast<std::size_t>(chosen)];
  bool restored = false;
  try {
    restored = AskAndRestore(copy);
  } catch (const dao::EngineError& error) {
    services_.Messages().Critical("BK_ERR_RESTORE"_key,
                                  {{"strError", core::EngineErrorText(services_.texts, error)}});
  }
  host_.reopenLog();
  SetRunning(false);
  if (restored) services_.Messages().Inform("BK_RESTORED"_key, {{"strFile", platform::FromPath(copy.path)}});
}

}  // namespace varnlog::app
