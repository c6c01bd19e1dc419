#include "app/frmProperties.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLocale>
#include <QTabWidget>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "core/LogConfig.h"
#include "core/Numbers.h"
#include "db/dao/ServerLink.h"
#include "db/dao/ServerState.h"
#include "db/modCommon.h"
#include "platform/Files.h"
#include "statistics/Retention.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kProgressSteps = 1000;
constexpr std::uint64_t kKilobyte = 1024;
constexpr std::uint64_t kMegabyte = kKilobyte * 1024;

std::int64_t RowCount(dao::Database& log) {
  const auto rows = log.OpenRecordset("SELECT TXray.* From TXray;", dao::RecordsetType::kDynaset);
  if (rows->IsEOF()) return 0;
  rows->MoveLast();
  return rows->RecordCount();
}

}  // namespace

frmProperties::frmProperties(QWidget* parent, core::Globals& globals, const start::Services& services,
                             PropertiesHost host)
    : QDialog(parent), globals_(globals), services_(services), host_(std::move(host)) {
  setObjectName("frmProperties");
  setWindowTitle(Caption(services_.texts, "PP_CAPTION"_key));
  auto* tabs = new QTabWidget;
  tabs->addTab(FileTab(), Caption(services_.texts, "PP_TAB_FILE"_key));
  tabs->addTab(ProgramTab(), Caption(services_.texts, "PP_TAB_PROGRAM"_key));
  auto* buttons = new QDialogButtonBox;
  auto* close = buttons->addButton(Caption(services_.texts, "GL_CLOSE"_key), QDialogButtonBox::RejectRole);
  close->setObjectName("cmdClose");
  close->setDefault(true);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs);
  layout->addWidget(buttons);
  tabs->setMinimumWidth(fontMetrics().averageCharWidth() * 68);
  ShowFacts();
}

QLabel* frmProperties::AddFact(QFormLayout* form, TextKey label, const char* name) {
  auto* fact = new QLabel;
  fact->setTextFormat(Qt::PlainText);
  fact->setObjectName(name);
  fact->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  fact->setWordWrap(true);
  fact->setAccessibleName(ui::PlainCaption(services_.texts, label));
  form->addRow(Caption(services_.texts, label), fact);
  return fact;
}

QWidget* frmProperties::FileTab() {
  const core::TextLookup& texts = services_.texts;
  auto* tab = new QWidget;
  auto* form = new QFormLayout(tab);
  path_ = AddFact(form, "PP_PATH"_key, "lblPath");
  version_ = AddFact(form, "PP_DBVERSION"_key, "lblVersion");
  size_ = AddFact(form, "PP_SIZE"_key, "lblSize");
  rows_ = AddFact(form, "PP_ROWS"_key, "lblRows");
  server_ = AddFact(form, "PP_SERVER"_key, "lblServer");
  connected_ = AddFact(form, "PP_CONNECTED"_key, "lblConnected");
  retention_ = AddFact(form, "PP_RETENTION"_key, "lblRetention");
  retention_->setToolTip(Caption(texts, "PP_RETENTIONTIP"_key));

  readOnly_ = new QCheckBox(Caption(texts, "PP_READONLY"_key));
  readOnly_->setObjectName("chkReadOnly");
  readOnly_->setToolTip(Caption(texts, "PP_READONLYTIP"_key));
  connect(readOnly_, &QCheckBox::clicked, this, &frmProperties::SetReadOnly);
  form->addRow(QString(), readOnly_);

  compact_ = new QPushButton(Caption(texts, "PP_COMPACT"_key));
  compact_->setObjectName("cmdCompact");
  connect(compact_, &QPushButton::clicked, this, [this] { Work(Job::kCompact); });
  repair_ = new QPushButton(Caption(texts, "PP_REPAIR"_key));
  repair_->setObjectName("cmdRepair");
  connect(repair_, &QPushButton::clicked, this, [this] { Work(Job::kRepair); });
  // Enter closes; work on the file is always asked for.
  for (QPushButton* job : {compact_, repair_}) job->setAutoDefault(false);
  auto* jobs = new QHBoxLayout;
  jobs->addWidget(compact_);
  jobs->addWidget(repair_);
  jobs->addStretch(1);
  form->addRow(QString(), jobs);

  running_ = new QLabel;
  progress_ = new QProgressBar;
  progress_->setObjectName("prgBar");
  progress_->setAccessibleName(Caption(texts, "PP_PROGRESS"_key));
  progress_->setRange(0, kProgressSteps);
  // Their room is kept while nothing runs, so that the dialog does not jump; a form gives it away.
  auto* room = new QVBoxLayout;
  for (QWidget* widget : {static_cast<QWidget*>(running_), static_cast<QWidget*>(progress_)}) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
    widget->hide();
    room->addWidget(widget);
  }
  form->addRow(room);
  return tab;
}

QWidget* frmProperties::ProgramTab() {
  auto* tab = new QWidget;
  auto* form = new QFormLayout(tab);
  AddFact(form, "PP_PROGRAMFOLDER"_key, "lblProgramFolder")->setText(ui::ToQString(globals_.ProgramFolderGl));
  AddFact(form, "PP_EXCHANGEFILE"_key, "lblExchangeFile")->setText(ui::ToQString(globals_.ExchangeFileGl));
  auto* onActivation = new QCheckBox(Caption(services_.texts, "PP_UPDATEONACT"_key));
  onActivation->setObjectName("chkUpdateOnActivation");
  onActivation->setToolTip(Caption(services_.texts, "PP_UPDATEONACTTIP"_key));
  onActivation->setChecked(globals_.UpdateOnActivation);
  connect(onActivation, &QCheckBox::toggled, this, [this](bool on) { globals_.UpdateOnActivation = on; });
  form->addRow(onActivation);
  auto* atOnce = new QCheckBox(Caption(services_.texts, "PP_ATONCE"_key));
  atOnce->setObjectName("chkTakeInAtOnce");
  atOnce->setToolTip(Caption(services_.texts, "PP_ATONCETIP"_key));
  atOnce->setChecked(globals_.TakeInAtOnce);
  connect(atOnce, &QCheckBox::toggled, this, [this](bool on) { globals_.TakeInAtOnce = on; });
  form->addRow(atOnce);
  return tab;
}

QString frmProperties::SizeText(std::uint64_t bytes) const {
  const bool small = bytes < kMegabyte;
  const double amount = static_cast<double>(bytes) / static_cast<double>(small ? kKilobyte : kMegabyte);
  const QString number = QLocale().toString(amount, 'f', small ? 0 : 1);
  return Caption(services_.texts, small ? "PP_SIZE_KB"_key : "PP_SIZE_MB"_key,
                 {{"strSize", ui::FromQString(number)}});
}

void frmProperties::ShowServer() {
  auto* form = qobject_cast<QFormLayout*>(server_->parentWidget()->layout());
  const auto show = [&](bool isVisible) {
    for (QLabel* fact : {server_, connected_}) form->setRowVisible(fact, isVisible);
  };
  show(false);
  const auto& log = globals_.LogEngineGl->Database();
  const auto state = log ? log->Server() : std::nullopt;
  if (!state) return;
  show(true);
  const std::string host = state->host.empty() ? state->database : state->host + ", " + state->database;
  const std::string encryption =
      state->encryption.empty() ? services_.texts.GetText("PP_PLAIN"_key) : state->encryption;
  server_->setText(ui::ToQString("PostgreSQL " + state->version + "\n" + host + "\n" + encryption));
  QStringList connected;
  for (const std::string& each : state->connected) connected.append(ui::ToQString(each));
  connected_->setText(connected.join('\n'));
  size_->setText(SizeText(static_cast<std::uint64_t>(state->bytes)));
}

void frmProperties::ShowFacts() {
  const auto& log = globals_.LogEngineGl->Database();
  path_->setText(ui::ToQString(globals_.strDataFileGl));
  version_->setText(ui::ToQString(globals_.DBVersionGl));
  const bool isFile = !dao::IsServerLink(globals_.strDataFileGl);
  size_->setText(isFile ? SizeText(platform::FileSize(platform::ToPath(globals_.strDataFileGl)).value_or(0))
                        : QString());
  readOnly_->setChecked(globals_.ReadOnlyGl);
  const bool isOpen = log != nullptr;
  const bool isChangeable = isOpen && !log->IsReadOnly();
  readOnly_->setEnabled(isChangeable);
  compact_->setEnabled(isFile && isChangeable);
  // A log that does not open is the one that needs it most.
  repair_->setEnabled(isFile && (isChangeable || (!isOpen && db::FileExists(globals_.strDataFileGl))));
  // What a file needs a server sees to itself.
  compact_->setToolTip(Caption(services_.texts, isFile ? "PP_COMPACTTIP"_key : "GL_ERR_3219"_key));
  repair_->setToolTip(Caption(services_.texts, isFile ? "PP_REPAIRTIP"_key : "GL_ERR_3219"_key));
  try {
    ShowServer();
    rows_->setText(isOpen ? ui::ToQString(core::Grouped(services_.texts, std::to_string(RowCount(*log))))
                          : QString());
    retention_->setText(
        isOpen ? ui::ToQString(core::Grouped(services_.texts, std::to_string(statistics::CountPastRetention(
                                                                  *log, services_.clock.Today()))))
               : QString());
  } catch (const dao::EngineError& error) {
    rows_->setText(ui::ToQString(core::EngineErrorText(services_.texts, error)));
  }
}

void frmProperties::SetReadOnly(bool readOnly) {
  try {
    core::WriteLogConfig(*globals_.LogEngineGl->Database(), core::kReadOnlyKey, readOnly ? "1" : "0");
    globals_.ReadOnlyGl = readOnly;
  } catch (const dao::EngineError& error) {
    services_.Messages().Critical("PP_ERR_READONLY"_key,
                                  {{"strError", core::EngineErrorText(services_.texts, error)}});
  }
  ShowFacts();
}

std::function<void()> frmProperties::RunJob(Job job) {
  const auto before = platform::FileSize(platform::ToPath(globals_.strDataFileGl)).value_or(0);
  db::CJetEngine engine;
  engine.SetMaintenanceProgress([this](double part) {
    progress_->setValue(static_cast<int>(part * kProgressSteps));
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    return true;
  });
  if (job == Job::kRepair)
    return [this, repair = start::RepairLog(engine, globals_.strDataFileGl, globals_.AuthorGl,
                                            services_.clock)] { ReportRepair(repair); };
  engine.CompactDatabase(globals_.strDataFileGl);
  const std::string error =
      engine.LastNumber() == 0 ? std::string() : core::EngineErrorText(services_.texts, engine);
  return [this, error, before] { ReportCompaction(error, before); };
}

void frmProperties::Work(Job job) {
  if (!host_.closeLog()) return;
  running_->setText(
      Caption(services_.texts, job == Job::kCompact ? "PP_COMPACT_RUNNING"_key : "PP_REPAIR_RUNNING"_key));
  progress_->setValue(0);
  running_->show();
  progress_->show();
  setEnabled(false);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const std::function<void()> report = RunJob(job);
  QApplication::restoreOverrideCursor();
  setEnabled(true);
  running_->hide();
  progress_->hide();
  host_.reopenLog();
  ShowFacts();
  report();
}

void frmProperties::ReportCompaction(const std::string& error, std::uint64_t before) {
  const core::Messages messages = services_.Messages();
  if (error.empty())
    messages.Inform("PP_COMPACT_DONE"_key, {{"strBefore", ui::FromQString(SizeText(before))},
                                            {"strAfter", ui::FromQString(size_->text())}});
  else
    messages.Critical("PP_ERR_COMPACT"_key, {{"strError", error}});
}

void frmProperties::ReportRepair(const start::LogRepair& repair) {
  using core::MessageIcon;
  const MessageIcon icon = !repair.IsDone()   ? MessageIcon::kCritical
                           : repair.IsWhole() ? MessageIcon::kInformation
                                              : MessageIcon::kWarning;
  services_.Messages().ShowText(start::RepairText(services_.texts, repair), icon);
}

}  // namespace varnlog::app
