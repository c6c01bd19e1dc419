#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/Commands.h"
#include "app/SelectionCommands.h"
#include "core/Globals.h"
#include "logview/CEdits.h"
#include "logview/NewRows.h"
#include "start/OldDataFile.h"
#include "start/StartUp.h"

namespace varnlog::app {

/// What the main window does for the program that runs in it.
class MainView : public SelectionDialogs {
 public:
  virtual void SetCaption(const std::string& caption) = 0;
  /// Commands, status bar and title may have to change their state.
  virtual void RefreshCommands() = 0;
  [[nodiscard]] virtual bool LogViewLoaded() const = 0;
  /// Shows the log view with the current selection, or makes it build its data anew. False when their server
  /// is away and it shows what it has shown before.
  virtual bool ViewResults() = 0;
  /// Brings the log view to the front; previews, which show what was before, close.
  virtual void FocusLogView() = 0;
  /// Stores what stands in an open cell editor; false when it was refused and stays there.
  [[nodiscard]] virtual bool CommitEntry() = 0;
  /// The values that are not locked yet, a line each, the first few of them.
  [[nodiscard]] virtual std::string PendingValues() = 0;
  /// Shows the rows of these values.
  virtual void ShowPending() = 0;
  /// The properties of the log of strDataFileGl, open or not; modal.
  virtual void ShowProperties() = 0;
  /// The hourglass.
  virtual void ShowBusy(bool busy) = 0;
  /// Closes the log view and the preview.
  virtual void CloseResultWindows() = 0;
  /// The open-file dialog beginning in `folder`; nothing when it was cancelled.
  [[nodiscard]] virtual std::optional<std::string> AskDataFile(const std::string& folder) = 0;
  /// The update run's dialog, modal. False, after a message, when the log's server could not be asked.
  virtual bool ShowUpdateRun() = 0;
  /// Takes the reported exposures in without a window; how many rows came or changed.
  virtual std::int64_t RunQuietUpdate() = 0;
  /// What such runs left to be said, in a window of its own.
  virtual void ShowNotices() = 0;
  /// Shows the rows anew; place, selection and focus stay.
  virtual void ShowRowsInPlace() = 0;
  /// Runs the conversion of an old log and shows how far it is.
  virtual void ShowConversion(const std::function<void(legacy::ConversionView&)>& conversion) = 0;
  /// Hears how far the first sealing of a log is.
  [[nodiscard]] virtual seals::Progress TakeOverProgress() = 0;
  /// `file` was opened: it goes to the head of the recently used files.
  virtual void RememberFile(const std::string& file) = 0;
};

/// The log that a run of the program was started with.
struct StartedWith {
  std::string file;           // full path; "" for the log of the settings
  bool isInspection = false;  // nothing is changed, taken in or kept, and the imaging suite is not needed
};

/// How long a log that is opened stays the practice's own.
enum class OpenFor { kGood, kThisRun };

/// What the main window's commands do, apart from drawing them. Errors have been shown to the user when a
/// call returns.
class MainProgram {
 public:
  MainProgram(core::Globals& globals, const start::Services& services, MainView& view, StartedWith started)
      : globals_(globals), services_(services), view_(view), started_(std::move(started)) {}

  /// The load sequence up to the point where the window is shown; false ends the program.
  [[nodiscard]] bool LoadBeforeShow();
  /// The rest of it: opens the log of the settings or asks for another.
  void LoadAfterShow();

  /// Opens a log, checks it, offers an update and shows the remembered selection.
  bool OpenDataFile(const std::string& file);
  /// Asks for a log and opens it in place of the present one; a beep when the dialog was cancelled.
  void FileOpen();
  /// Opens a log in place of the present one.
  void OpenFile(const std::string& file, OpenFor time = OpenFor::kGood);

  void Update();
  void Select(core::SelectionKind kind);
  void Show(const core::Selection& selection);
  /// Asks whether pending exposures are to be taken in; a No also keeps activation from doing it.
  void OfferUpdate();
  /// The program was activated 200 ms ago.
  void UpdateAfterActivation();
  /// Whether reported exposures may be taken into this log without asking.
  [[nodiscard]] bool MayTakeInAtOnce() const;
  /// Does so and marks them in the log view. To be called when the user is in no dialog and no editor.
  void TakeInAtOnce();

  /// True: do not quit.
  [[nodiscard]] bool ConfirmQuit();
  /// To be called before the log is closed: locks what was corrected, waiting for other workstations and
  /// asking when they take too long. False: do not close.
  [[nodiscard]] bool LockCorrections();
  /// The same where nobody can be asked. What cannot be locked is when this workstation opens the log next.
  void LockWithoutAsking();
  /// Locks the corrected values and closes the log; false when none was open.
  bool CloseVarnlogDB();
  /// Closes the log for work on its file; false when the user keeps it open, because that locks the values
  /// corrected so far.
  bool CloseForMaintenance();
  /// Opens it again, without offering an update, and shows it.
  void ReopenAfterMaintenance();
  /// The log's file is no longer the one that was opened: says so, opens it anew and shows it. Corrections
  /// that are not locked yet belong to the other file and are forgotten.
  void ReopenReplacedLog();
  /// After the window's position was saved: closes the workspace and keeps the settings.
  void Unload();

  [[nodiscard]] CommandState State() const;
  [[nodiscard]] bool IsInspection() const { return started_.isInspection; }
  [[nodiscard]] logview::CEdits& Edits() { return edits_; }
  [[nodiscard]] const logview::NewRows& NewRows() const { return newRows_; }

 private:
  void ReplaceDataFile(const std::string& file, OpenFor time);
  void LoadLogSettings();
  void AwaitConfiguredLog();
  [[nodiscard]] bool ConfirmOtherLog();
  /// What kept it from locking all corrections.
  [[nodiscard]] std::optional<dao::EngineError> TryToLock();
  bool RunUpdate();
  void UpdateAndView();
  void ViewInstead(const core::Selection& before);
  bool Open(const std::string& file);
  bool OfferRepair(const std::string& file);
  /// Locks what was corrected so far.
  void WriteBackEdits();

  core::Globals& globals_;
  start::Services services_;
  MainView& view_;
  const StartedWith started_;
  logview::CEdits edits_;
  logview::NewRows newRows_;
  bool updating_ = false;
  bool reopening_ = false;
  bool offeringRepair_ = false;
};

}  // namespace varnlog::app
