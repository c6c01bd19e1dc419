#include "app/frmMDIMain.h"

#include <algorithm>

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMenu>
#include <QMimeData>
#include <QStatusBar>
#include <QThread>
#include <QUrl>

#include "app/frmConvert.h"
#include "app/frmProperties.h"
#include "db/modCommon.h"
#include "dialogs/frmBegEnd.h"
#include "dialogs/frmPatSearch.h"
#include "intake/frmRunUpdate.h"
#include "logview/EditRules.h"
#include "logview/PendingEdits.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kMillisecondsAfterActivation = 200;
constexpr int kMillisecondsOfSessionEnd = 30'000;
constexpr int kMillisecondsForMessage = 5'000;
constexpr int kMillisecondsForPlace = 300;
constexpr double kUnmaximisedPart = 0.8;

/// A window manager gives a maximised window its place a moment later, and what is shown before that would be
/// centred over the wrong one. Keys and clicks wait: no command may run before there is a log.
void AwaitPlace(const QWidget& window, const QSize& before) {
  QElapsedTimer waiting;
  waiting.start();
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  while (window.isMaximized() && window.size() == before && !waiting.hasExpired(kMillisecondsForPlace)) {
    QThread::msleep(1);
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
}

/// In the middle of the frame, with some of it left around.
QRect UnmaximisedPlace(const QSize& frame) {
  const QSize size = frame * kUnmaximisedPart;
  return {QPoint((frame.width() - size.width()) / 2, (frame.height() - size.height()) / 2), size};
}

QString QView(std::string_view text) {
  return ui::ToQString(text);
}

/// The one file of this machine that is dragged; "" for anything else.
QString DroppedFile(const QMimeData& data) {
  const QList<QUrl> urls = data.urls();
  return urls.size() == 1 ? QDir::toNativeSeparators(urls.front().toLocalFile()) : QString();
}

}  // namespace

frmMDIMain::frmMDIMain(const WindowContext& context)
    : context_(context),
      program_(context_.globals, context_.services, *this, context_.started),
      mru_(context_.services.ini),
      formPos_(context_.services.ini),
      print_(PrintContext()),
      mdi_(new QMdiArea),
      desk_(new Desk),
      frame_(new QStackedWidget),
      tlbStandard_(new ui::Toolbar),
      history_(new logview::HistoryPane(context_.services.texts, context_.scheme, context_.shortDate)) {
  setObjectName("frmMDIMain");
  setAcceptDrops(true);
  setWindowIcon(ui::ProgramIcon());
  SetCaption(context_.services.texts.GetText("MN_CAPTION"_key));
  mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  frame_->addWidget(mdi_);
  frame_->addWidget(desk_);
  setCentralWidget(frame_);
  connect(mdi_, &QMdiArea::subWindowActivated, this, &frmMDIMain::ShowDeskOrWindows, Qt::QueuedConnection);
  BuildActions();
  BuildMenus();
  BuildToolbar();
  BuildStatusBar();
  BuildHistory();
  WatchExchange();
  ScheduleBackup();
  timUpdate_.setSingleShot(true);
  timUpdate_.setInterval(kMillisecondsAfterActivation);
  connect(&timUpdate_, &QTimer::timeout, this, &frmMDIMain::UpdateWhenFree);
}

frmMDIMain::~frmMDIMain() {
  // The view hands its widths and its log back while this window can still take them.
  if (results_) results_->close();
}

bool frmMDIMain::Load() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  if (!program_.LoadBeforeShow()) {
    QApplication::restoreOverrideCursor();
    return false;
  }
  formPos_.SetForm(&place_);
  formPos_.SetIniFile(context_.globals.IniFileGl);
  mru_.SetIniFile(context_.globals.IniFileGl);
  mru_.SetMenuItem(this);
  resize(fontMetrics().averageCharWidth() * 150, fontMetrics().height() * 40);
  const bool restored = formPos_.RestoreForm(true);
  if (!restored) place_.SetState(WindowState::kMaximised);
  ApplyViewOptions();
  RefreshCommands();
  help_ = std::make_unique<Help>(context_.globals, context_.services);
  const QSize before = size();
  show();
  AwaitPlace(*this, before);
  QApplication::restoreOverrideCursor();
  mru_.GetMRUList();
  program_.LoadAfterShow();
  // A question may have had the focus before this window ever had it; then nobody gives it back.
  activateWindow();
  FocusLogView();
  connect(qApp, &QApplication::applicationStateChanged, this, &frmMDIMain::ApplicationStateChanged);
  loading_ = false;
  ShowDeskOrWindows();
  waiting_.emplace(context_.globals.LanguageGl);
  exchange_.Watch(context_.globals.ExchangeFileGl);
  return true;
}

void frmMDIMain::RefreshCommands() {
  if (unloading_) return;
  const CommandState state = program_.State();
  for (const CommandDef& command : AllCommands()) {
    actions_.at(command.id)->setEnabled(IsEnabled(command.enabledWhen, state));
  }
  actions_.at(CommandId::mnuEditIncomplete)->setChecked(results_ && results_->OnlyIncomplete());
  if (!state.dataFileOpen) SetCaption(context_.services.texts.GetText("MN_CAPTION"_key));
  CurrentRowChanged();
  ShowStatus();
}

void frmMDIMain::ShowStatus() {
  const core::TextLookup& texts = context_.services.texts;
  const CommandState state = program_.State();
  filePanel_->setText(state.dataFileOpen ? QView(context_.globals.strDataFileGl)
                                         : Caption(texts, "MN_STATUS_NOFILE"_key));
  filePanel_->setToolTip(ui::PlainToolTip(filePanel_->text()));
  readOnlyPanel_->setVisible(state.dataFileOpen && state.readOnly);
  readOnlyPanel_->setText(
      Caption(texts, program_.IsInspection() ? "MN_STATUS_INSPECTION"_key : "MN_STATUS_READONLY"_key));
  readOnlyPanel_->setToolTip(Caption(texts, ReadOnlyReason()));
  otherPanel_->setVisible(IsMarkedAsOther());
  const std::size_t pending = program_.Edits().Count();
  pendingPanel_->setVisible(pending > 0);
  pendingPanel_->setText(Caption(texts, "MN_STATUS_PENDING"_key, {{"lngCount", std::to_string(pending)}}));
  rowsPanel_->setVisible(state.logViewShown);
  if (!state.logViewShown) ShowIncomplete(std::nullopt);
}

core::TextKey frmMDIMain::ReadOnlyReason() const {
  return program_.IsInspection() ? "MN_STATUS_INSPECTIONTIP"_key : logview::ReadOnlyReason(context_.globals);
}

void frmMDIMain::ShowRowCount(std::int64_t rows, bool complete) {
  const core::TextLookup& texts = context_.services.texts;
  QString text = Caption(texts, "MN_STATUS_ROWS"_key, {{"lngCount", std::to_string(rows)}});
  if (!complete) text += QStringLiteral("...");
  rowsPanel_->setText(text);
  rowsPanel_->setVisible(true);
}

void frmMDIMain::ShowIncomplete(std::optional<std::int64_t> rows) {
  incompletePanel_->setVisible(rows.value_or(0) > 0);
  incompletePanel_->setText(Caption(context_.services.texts, "MN_STATUS_INCOMPLETE"_key,
                                    {{"lngCount", std::to_string(rows.value_or(0))}}));
}

/// Who inspects a log looks at no practice's own.
bool frmMDIMain::IsMarkedAsOther() const {
  return program_.State().dataFileOpen && !program_.IsInspection() && start::IsOtherLog(context_.globals);
}

void frmMDIMain::SetCaption(const std::string& caption) {
  QString title = QView(caption);
  if (program_.IsInspection()) {
    title += QStringLiteral(" (%1)").arg(Caption(context_.services.texts, "MN_STATUS_INSPECTION"_key));
  } else if (IsMarkedAsOther()) {
    title += QStringLiteral(" (%1)").arg(Caption(context_.services.texts, "MN_OTHERLOG"_key));
  }
  setWindowTitle(title);
}

QIcon frmMDIMain::PictureOf(const std::string& iconKey) const {
  return ui::ThemedIcon(QView(iconKey));
}

bool frmMDIMain::AskPeriod() {
  dialogs::frmBegEnd dialog(
      this,
      dialogs::Period(context_.globals, context_.shortDate, context_.services.clock, context_.services.texts),
      context_.services.texts, context_.services.user);
  return dialog.exec() == QDialog::Accepted;
}

bool frmMDIMain::AskPatient() {
  const auto& log = context_.globals.LogEngineGl->Database();
  if (!log) return false;
  dialogs::frmPatSearch dialog(this, dialogs::PatientSearch(context_.globals, *log, context_.shortDate),
                               context_.services.texts, context_.services.user,
                               results_ ? results_->CurrentPatient() : std::string());
  return dialog.exec() == QDialog::Accepted;
}

std::optional<std::string> frmMDIMain::AskDataFile(const std::string& folder) {
  const core::TextLookup& texts = context_.services.texts;
  ui::CFileDialog dialog;
  dialog.SetInitDir(folder);
  dialog.SetDialogTitle(texts.GetText("MN_OPENXRLOG"_key));
  dialog.SetHelpTopic("MN_OPENXRLOG");
  dialog.SetFilter(texts.GetText("MN_MDBFILTER"_key));
  dialog.SetDefaultExt("MDB");
  return dialog.ShowOpen(this);
}

bool frmMDIMain::ShowUpdateRun() {
  intake::frmRunUpdate dialog(this, {context_.globals, context_.services.texts, context_.services.clock},
                              context_.services.user);
  dialog.exec();
  // Some window managers give the keys to nobody when a dialog has gone.
  activateWindow();
  // The exchange file that was moved aside holds the names of patients. By then nobody is opening it any
  // more.
  constexpr std::chrono::seconds kUntilOutOfReach{5};
  QTimer::singleShot(kUntilOutOfReach, this, [this] { intake::SweepExchange(context_.globals); });
  return !dialog.Result().serverAway;
}

void frmMDIMain::ShowConversion(const std::function<void(legacy::ConversionView&)>& conversion) {
  frmConvert window(this, context_.services.texts, context_.services.user);
  conversion(window);
}

bool frmMDIMain::ViewResults() {
  if (!context_.globals.LogEngineGl || !context_.globals.LogEngineGl->Database()) return true;
  bool isShown = true;
  if (results_) {
    isShown = results_->InitData();
  } else {
    const logview::ViewContext view{context_.globals,       context_.services.texts, context_.services.ini,
                                    context_.services.user, context_.scheme,         context_.shortDate,
                                    program_.Edits(),       program_.NewRows()};
    results_ = new logview::frmResults(view, *this);
    AddChild(results_);
  }
  RefreshCommands();
  return isShown;
}

void frmMDIMain::AddChild(QWidget* window) {
  frame_->setCurrentWidget(mdi_);
  QMdiSubWindow* child = mdi_->addSubWindow(window);
  child->setAttribute(Qt::WA_DeleteOnClose);
  child->setWindowIcon(window->windowIcon());
  child->setGeometry(UnmaximisedPlace(mdi_->size()));
  connect(child, &QMdiSubWindow::windowStateChanged, this, &frmMDIMain::ShowDeskOrWindows,
          Qt::QueuedConnection);
  child->showMaximized();
  window->setFocus();
}

void frmMDIMain::FocusLogView() {
  if (!results_) return;
  ClosePreviews();
  frame_->setCurrentWidget(mdi_);
  auto* child = qobject_cast<QMdiSubWindow*>(results_->parentWidget());
  if (child->isMinimized()) child->showMaximized();
  mdi_->setActiveSubWindow(child);
  results_->setFocus();
}

void frmMDIMain::ClosePreviews() {
  for (QMdiSubWindow* child : mdi_->subWindowList()) {
    if (child->widget() != results_) child->close();
  }
}

void frmMDIMain::ShowLogView() {
  if (!results_) ViewResults();
  FocusLogView();
}

void frmMDIMain::ShowDeskOrWindows() {
  if (loading_ || unloading_) return;
  const QList<QMdiSubWindow*> children = mdi_->subWindowList();
  const bool windows = std::ranges::any_of(
      children, [](const QMdiSubWindow* child) { return !child->isHidden() && !child->isMinimized(); });
  if (!windows) OfferOnDesk();
  frame_->setCurrentWidget(windows ? static_cast<QWidget*>(mdi_) : desk_);
  if (!windows) desk_->setFocus();
}

void frmMDIMain::OfferOnDesk() {
  const core::TextLookup& texts = context_.services.texts;
  const bool open = program_.State().dataFileOpen;
  const std::string& log = context_.globals.strDataFileGl;
  const auto keys = [this](CommandId id) {
    return Action(id)->shortcut().toString(QKeySequence::NativeText);
  };
  const auto picture = [this](CommandId id) { return Action(id)->icon(); };
  std::vector<Desk::Choice> choices;
  if (open) {
    choices.push_back({Caption(texts, "MN_DESK_SHOW"_key), keys(CommandId::mnuViewLoad),
                       picture(CommandId::mnuSortAll), [this] { ShowLogView(); }});
  }
  choices.push_back({Caption(texts, "MN_OPENXRLOG"_key), keys(CommandId::mnuFileOpen),
                     picture(CommandId::mnuFileOpen), [this] { Run(CommandId::mnuFileOpen); }});
  for (const MruEntry& entry : recentFiles_) {
    if (open && entry.path == log) continue;
    choices.push_back({QView(db::FileNamePart(entry.path)), QView(entry.path),
                       picture(CommandId::mnuFileOpen), [this, path = entry.path] { OpenRecent(path); }});
  }
  choices.push_back({Caption(texts, "MN_HELP"_key), keys(CommandId::mnuHelpContents),
                     picture(CommandId::mnuHelpIndex), [this] { Run(CommandId::mnuHelpContents); }});
  const QString title = open ? Caption(texts, "MN_DESK_HIDDEN"_key, {{"strFileTitle", db::FileNamePart(log)}})
                             : Caption(texts, "MN_STATUS_NOFILE"_key);
  desk_->Offer(title, std::move(choices));
}

std::string frmMDIMain::PendingValues() {
  return logview::DescribePending(*context_.globals.LogEngineGl->Database(), program_.Edits(),
                                  context_.services.texts, context_.scheme, context_.shortDate);
}

void frmMDIMain::ShowPending() {
  ShowLogView();
  results_->ShowPending();
}

void frmMDIMain::ShowBusy(bool busy) {
  if (busy) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

void frmMDIMain::CloseResultWindows() {
  for (QMdiSubWindow* child : mdi_->subWindowList()) child->close();
}

void frmMDIMain::ResultsClosed() {
  ClosePreviews();
  results_ = nullptr;
  RefreshCommands();
}

void frmMDIMain::RememberFile(const std::string& file) {
  mru_.SetMRUList(file, {});
}

void frmMDIMain::ShowEntries(const std::vector<MruEntry>& entries) {
  recentFiles_ = entries;
  for (QAction* action : recent_) delete action;
  recent_.clear();
  for (const MruEntry& entry : entries) {
    auto* action = new QAction(QView(entry.caption), this);
    action->setData(QView(entry.tag));
    connect(action, &QAction::triggered, this, [this, path = entry.path] { OpenRecent(path); });
    recentMenu_->insertAction(recentEnd_, action);
    recent_.push_back(action);
  }
}

void frmMDIMain::OpenRecent(const std::string& file) {
  const core::TextLookup& texts = context_.services.texts;
  statusBar()->showMessage(Caption(texts, "MN_HEADLINE"_key, {{"strFileTitle", db::FileNamePart(file)}}),
                           kMillisecondsForMessage);
  program_.OpenFile(file);
}

// Whoever notices it may be in the middle of reading or painting.
void frmMDIMain::LogReplaced() {
  QTimer::singleShot(0, this, [this] { program_.ReopenReplacedLog(); });
}

void frmMDIMain::ApplicationStateChanged(Qt::ApplicationState state) {
  const auto log = context_.globals.LogEngineGl ? context_.globals.LogEngineGl->Database() : nullptr;
  if (state == Qt::ApplicationActive && log && log->WasReplaced()) LogReplaced();
  if (state == Qt::ApplicationActive && UpdatesOnActivation(context_.globals, LogViewLoaded())) {
    timUpdate_.start();
  }
}

bool frmMDIMain::IsBusy() const {
  return loading_ || QApplication::activeModalWidget() != nullptr ||
         QApplication::activePopupWidget() != nullptr || (results_ && results_->Grid().IsEditing());
}

void frmMDIMain::UpdateWhenFree() {
  if (IsBusy()) {
    timUpdate_.start();
  } else if (UpdatesOnActivation(context_.globals, LogViewLoaded())) {
    program_.UpdateAfterActivation();
  }
}

void frmMDIMain::BringToFront() {
  place_.Uncover();
  raise();
  activateWindow();
}

void frmMDIMain::KeepForSessionEnd() {
  if (loading_ || unloading_) return;
  if (CommitEntry()) program_.LockWithoutAsking();
  formPos_.SaveForm();
  sessionEnds_ = true;
  // Another program may have stopped it; then the question is asked again.
  QTimer::singleShot(kMillisecondsOfSessionEnd, this, [this] { sessionEnds_ = false; });
}

void frmMDIMain::OpenWhenFree(const std::string& file, OpenFor time) {
  if (unloading_ || file.empty() || (program_.State().dataFileOpen && file == context_.globals.strDataFileGl))
    return;
  if (!IsBusy()) return program_.OpenFile(file, time);
  QTimer::singleShot(kMillisecondsAfterActivation, this, [this, file, time] { OpenWhenFree(file, time); });
}

void frmMDIMain::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFile(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

/// The program that the file comes from waits until this has returned.
void frmMDIMain::dropEvent(QDropEvent* event) {
  event->setDropAction(Qt::CopyAction);
  event->accept();
  QTimer::singleShot(0, this, [this, file = ui::FromQString(DroppedFile(*event->mimeData()))] {
    BringToFront();
    OpenWhenFree(file, OpenFor::kGood);
  });
}

void frmMDIMain::closeEvent(QCloseEvent* event) {
  if (loading_) {
    event->ignore();
    return;
  }
  // Questions can be seen, and the state that is saved is the one in which the window is used.
  place_.Uncover();
  const bool mayAsk = !unloading_ && !sessionEnds_;
  if (mayAsk && (!CommitEntry() || program_.ConfirmQuit() || !program_.LockCorrections())) {
    event->ignore();
    return;
  }
  if (results_) results_->close();
  CloseResultWindows();
  unloading_ = true;
  timUpdate_.stop();
  timAtOnce_.stop();
  timBackup_.stop();
  exchange_.Watch({});
  formPos_.SaveForm();
  program_.Unload();
  help_.reset();
  event->accept();
}

void frmMDIMain::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  // Icons are drawn in the colours of the theme.
  if (event->type() == QEvent::PaletteChange && !actions_.empty()) BuildToolbar();
}

}  // namespace varnlog::app
