#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QStackedWidget>
#include <QTimer>

#include "app/BackupJob.h"
#include "app/CFormPosIni.h"
#include "app/CMruINI.h"
#include "app/Desk.h"
#include "app/ExchangeWatcher.h"
#include "app/Help.h"
#include "app/MainProgram.h"
#include "app/PlacedWidget.h"
#include "intake/CodeMappings.h"
#include "intake/WaitingRecords.h"
#include "logview/HistoryPane.h"
#include "logview/frmResults.h"
#include "platform/ShortDate.h"
#include "report/PrintCommands.h"
#include "ui/Toolbar.h"

namespace varnlog::app {

/// What the main window works with besides the program's state; all of it outlives the window.
struct WindowContext {
  core::Globals& globals;
  start::Services services;
  const intake::ToothScheme& scheme;
  const platform::ShortDate& shortDate;
  StartedWith started = {};
};

/// The program's only top-level window. It is built from the command tables and shows what MainProgram does.
class frmMDIMain final : public QMainWindow,
                         private MainView,
                         private CommandHost,
                         private logview::ResultsHost,
                         private MruMenu {
 public:
  explicit frmMDIMain(const WindowContext& context);
  ~frmMDIMain() override;

  /// The load sequence; false ends the program without a window.
  [[nodiscard]] bool Load();

  /// nullptr while the log view is not open.
  [[nodiscard]] logview::frmResults* Results() const { return results_; }
  [[nodiscard]] QAction* Action(CommandId id) const { return actions_.at(id); }
  /// To the front, out of the icon state, as another copy of the program asks for.
  void BringToFront();
  /// The session may be about to end, and nobody can be asked: what was entered is stored and locked.
  void KeepForSessionEnd();
  /// As soon as no dialog and no editor is open; "" opens nothing.
  void OpenWhenFree(const std::string& file, OpenFor time);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildActions();
  void BuildMenus();
  void BuildToolbar();
  void BuildStatusBar();
  void BuildHistory();
  void ShowHistory();
  void ApplyViewOptions();
  void Run(CommandId id);
  [[nodiscard]] report::PrintContext PrintContext();
  void ShowStatus();
  [[nodiscard]] bool IsMarkedAsOther() const;
  /// Shows a window in the frame, as large as that and of a useful size when it is not.
  void AddChild(QWidget* window);
  /// They show the selection for which they were opened and none after it.
  void ClosePreviews();
  void ShowLogView();
  /// The desk takes the place of a frame in which nothing can be seen.
  void ShowDeskOrWindows();
  void OfferOnDesk();
  void OpenRecent(const std::string& file);
  void ApplicationStateChanged(Qt::ApplicationState state);
  /// A dialog works with a selection that is not confirmed yet, an editor with a value that is not stored
  /// yet.
  [[nodiscard]] bool IsBusy() const;
  void UpdateWhenFree();
  void WatchExchange();
  void ScheduleBackup();
  void BackUpIfDue();
  void ExchangeChanged();
  void ShowWaiting();
  void TakeInAtOnce();

  // CommandHost
  [[nodiscard]] MainProgram& Program() override { return program_; }
  void Quit() override { close(); }
  void Print() override;
  void ShowPreview() override;
  void SetUpPrinter() override;
  void ShowVerify() override;
  void ExportShownRows() override;
  void MakeInspection() override;
  void ShowBackup() override;
  void FindInList() override;
  void ToggleIncomplete() override;
  void GoToMissing(int step) override;
  void Toggle(bool core::Globals::*option) override;
  void ReloadView() override;
  void ShowPropertiesOfLog() override { ShowProperties(); }
  void ShowStatistics() override;
  void ShowSettings() override;
  void ShowHelp(HelpPart part) override;
  void ShowAbout() override;
  void ShowSupport() override;

  // MainView
  bool AskPeriod() override;
  bool AskPatient() override;
  void SetCaption(const std::string& caption) override;
  void RefreshCommands() override;
  [[nodiscard]] bool LogViewLoaded() const override { return !results_.isNull(); }
  bool ViewResults() override;
  void FocusLogView() override;
  [[nodiscard]] bool CommitEntry() override { return !results_ || results_->CommitEdit(); }
  [[nodiscard]] std::string PendingValues() override;
  void ShowPending() override;
  void ShowProperties() override;
  void ShowBusy(bool busy) override;
  void CloseResultWindows() override;
  [[nodiscard]] std::optional<std::string> AskDataFile(const std::string& folder) override;
  bool ShowUpdateRun() override;
  std::int64_t RunQuietUpdate() override;
  void ShowNotices() override;
  void ShowRowsInPlace() override;
  void ShowConversion(const std::function<void(legacy::ConversionView&)>& conversion) override;
  [[nodiscard]] seals::Progress TakeOverProgress() override;
  void RememberFile(const std::string& file) override;

  // logview::ResultsHost
  [[nodiscard]] QIcon PictureOf(const std::string& iconKey) const override;
  void ShowRowCount(std::int64_t rows, bool complete) override;
  void ShowIncomplete(std::optional<std::int64_t> rows) override;
  [[nodiscard]] core::TextKey ReadOnlyReason() const override;
  void CurrentRowChanged() override;
  void ShowSelection(const core::Selection& selection) override { program_.Show(selection); }
  void SaveRecord(std::unique_ptr<dao::Recordset> rows, const std::string& headline) override;
  void LogReplaced() override;
  void ResultsClosed() override;

  // MruMenu
  void ShowEntries(const std::vector<MruEntry>& entries) override;

  WindowContext context_;
  MainProgram program_;
  CMruINI mru_;
  PlacedWidget place_{*this};
  CFormPosIni formPos_;
  std::unique_ptr<Help> help_;  // from the load to the unload
  report::PrintCommands print_;

  QMdiArea* mdi_;
  Desk* desk_;
  QStackedWidget* frame_;  // one of the two
  ui::Toolbar* tlbStandard_;
  QMenu* recentMenu_ = nullptr;   // the menu that holds mnuFileMRU
  QAction* recentEnd_ = nullptr;  // the entries stand before this one
  std::vector<QAction*> recent_;
  std::vector<MruEntry> recentFiles_;
  std::map<CommandId, QAction*> actions_;
  logview::HistoryPane* history_;
  QTimer historyTimer_;
  QLabel* rowsPanel_ = nullptr;
  QLabel* incompletePanel_ = nullptr;
  QLabel* filePanel_ = nullptr;
  QLabel* otherPanel_ = nullptr;
  QLabel* readOnlyPanel_ = nullptr;
  QLabel* pendingPanel_ = nullptr;
  QLabel* waitingPanel_ = nullptr;
  QLabel* noticesPanel_ = nullptr;
  ExchangeWatcher exchange_{[this] { ExchangeChanged(); }};
  std::optional<intake::WaitingRecords> waiting_;  // from the load on
  std::vector<std::string> notices_;               // of updates that could not tell them
  QTimer timAtOnce_;
  BackupJob backup_{context_.globals};
  QTimer timBackup_{this};
  bool backupTold_ = false;  // what keeps the daily copy from being made
  QTimer timUpdate_;
  QPointer<logview::frmResults> results_;
  bool loading_ = true;
  bool unloading_ = false;
  bool sessionEnds_ = false;  // nobody can be asked
};

}  // namespace varnlog::app
