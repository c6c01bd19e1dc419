#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QProgressDialog>
#include <QTimer>
#include <QWidget>

#include "core/Globals.h"
#include "core/Messages.h"
#include "core/SettingsStore.h"
#include "db/dao/DBEngine.h"
#include "intake/CodeMappings.h"
#include "logview/CEdits.h"
#include "logview/CTDBGColumnsINI.h"
#include "logview/LogWatch.h"
#include "logview/NewRows.h"
#include "logview/RowDisplay.h"
#include "logview/RowFilter.h"
#include "logview/Tally.h"
#include "logview/WriteRow.h"
#include "logview/frmFind.h"
#include "platform/ShortDate.h"
#include "ui/TDBGrid.h"

namespace varnlog::logview {

/// What the log view works with; all of it outlives the view.
struct ViewContext {
  core::Globals& globals;
  const core::TextLookup& texts;
  core::SettingsStore& ini;
  core::UserDialog& user;
  const intake::ToothScheme& scheme;
  const platform::ShortDate& shortDate;
  CEdits& edits;
  const NewRows& newRows;

  [[nodiscard]] core::Messages Messages() const { return {user, texts}; }
};

/// What the log view tells the main window.
class ResultsHost {
 public:
  virtual ~ResultsHost() = default;
  virtual void SetCaption(const std::string& caption) = 0;
  [[nodiscard]] virtual QIcon PictureOf(const std::string& iconKey) const = 0;
  /// The state of commands and status bar may have changed.
  virtual void RefreshCommands() = 0;
  /// `complete` is false while rows are still being counted.
  virtual void ShowRowCount(std::int64_t rows, bool complete) = 0;
  /// How many of the selection's exposures lack a value; nothing while that is not known.
  virtual void ShowIncomplete(std::optional<std::int64_t> rows) = 0;
  /// Another row became the current one, or is shown anew.
  virtual void CurrentRowChanged() = 0;
  /// Why nothing can be entered.
  [[nodiscard]] virtual core::TextKey ReadOnlyReason() const = 0;
  /// Shows another selection.
  virtual void ShowSelection(const core::Selection& selection) = 0;
  /// Saves the report of these rows, which `headline` names, as a file that the user chooses.
  virtual void SaveRecord(std::unique_ptr<dao::Recordset> rows, const std::string& headline) = 0;
  /// The log's file was replaced since it was opened: this view has nothing to show any more. Returns before
  /// anything is done about it.
  virtual void LogReplaced() = 0;
  /// The view is about to go away.
  virtual void ResultsClosed() = 0;
};

/// The log view: the rows of the current selection in a grid that asks for them block by block.
class frmResults final : public QWidget, private ui::TDBGridEvents, private ColumnWidths {
 public:
  frmResults(const ViewContext& context, ResultsHost& host, QWidget* parent = nullptr);
  ~frmResults() override;

  /// Builds the query of the selection in the globals and shows its rows from the first one on. An open
  /// editor is left first; when its entry is refused, everything stays as it is.
  /// False when that server is away from which they come: then what was shown before still is.
  bool InitData();
  /// The same rows and what has come to them, seen from the same place: scroll position, current cell, marked
  /// cells and focus stay. Not while a cell is being edited.
  void ReloadInPlace();
  /// The rows with corrections that are not locked yet, until the next InitData.
  void ShowPending();
  /// Stores what stands in an open editor and closes it; false when it was refused and stays there.
  bool CommitEdit() { return grid_->CommitEdit(); }
  /// Takes a pending entry back, value and all: that of the current cell, else the last one made in these
  /// rows. Beeps when there is none.
  void TakeBackEntry();
  /// Shows the bar in which something is looked for.
  void BeginFind();
  /// Whether only exposures are shown that lack a value.
  void SetOnlyIncomplete(bool only);
  [[nodiscard]] bool OnlyIncomplete() const { return filter_.OnlyIncomplete(); }
  /// To the next value that is open and empty and must not stay so, `step` being 1, or the previous one, -1.
  /// Beeps when there is none.
  void GoToMissing(int step);
  /// Builds the columns anew after the database was changed under the view.
  void ReloadGrid();
  /// Whether values may be entered, after the log was protected or freed.
  void ApplyReadOnly();
  /// After the settings' colours were changed.
  void ApplyColors() { LoadColors(); }
  /// Lets go of the open log.
  void CloseData();

  [[nodiscard]] const std::string& RecordSource() const { return recordSource_; }
  /// What the rows are, as the report's title says it.
  [[nodiscard]] std::string Headline() const;
  /// The rows shown, in their order, with a current row of their own; nullptr when none can be read.
  [[nodiscard]] std::unique_ptr<dao::Recordset> ShownRows() const;
  /// The numbers of the columns shown, from left to right.
  [[nodiscard]] std::vector<int> ShownColumns() const;
  [[nodiscard]] ui::TDBGrid& Grid() { return *grid_; }
  /// The patient of the current row as the grid shows him; "" when there is none.
  [[nodiscard]] std::string CurrentPatient() const;
  /// The number of the exposure in the current row; nothing when there is none.
  [[nodiscard]] std::optional<std::int64_t> CurrentExposure() const;
  /// Every row is counted.
  [[nodiscard]] bool IsPopulated() const { return populated_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void BuildColumns();
  void LimitInput();
  [[nodiscard]] int DigitWidth() const;
  void SaveColumns();
  void RestoreColumns();
  class Entries;
  void ShowContextMenu(const QPoint& position);
  void ShowHeadingMenu(const QPoint& position);
  void AddColumnMenu(QMenu& menu);
  void ShowColumn(int column, bool shown);
  void HideStoredColumns();
  void ExplainColumn(int column);
  void ExplainCell();
  void ShowPatientOfRow();
  void SavePatientRecord();
  void LoadColors();
  void ShowIcon(const std::string& key);
  bool OpenRows(const std::string& sql);
  void RowsUnreadable(const std::string& sql, const dao::EngineError& error);
  void LetGoOfRows();
  void CountFurtherRows();
  void FilterChanged();
  /// Shows the rows that the filter lets through now, and stays at the exposure where the user is.
  void ApplyFilter();
  void ReadForFilter();
  void EndFind();
  void ShowCounts();
  void BuildSums();
  /// How many marked rows there are; a row of which several pieces are marked counts several times.
  [[nodiscard]] std::int64_t MarkedRows() const;
  [[nodiscard]] std::vector<std::int64_t> ExposuresToSum() const;
  void BeginSums();
  void ReadForSums();
  void ShowSums();
  void NoteMissing(dao::Recordset& row);
  [[nodiscard]] std::optional<int> MissingIn(std::int64_t row, int column, int step);
  void MarkSort();
  [[nodiscard]] bool LocateRow(int row);
  [[nodiscard]] std::int64_t ExposureAt(std::int64_t bookmark) const;
  /// The log that the rows come from.
  [[nodiscard]] dao::Database& Log() const { return *context_.globals.LogEngineGl->Database(); }
  void ShowError(const dao::EngineError& error);
  /// What another workstation has changed is shown as soon as nobody is disturbed by that.
  void LookForNews();
  void ServerIsAway();
  void Say(const QString& text, int milliseconds = 0);
  /// What was not seen meanwhile is shown, and that the server answers again is said.
  void Reconnected();
  /// Finds out who has entered what the user wanted to enter.
  void NoteWhoWasFirst(std::int64_t bookmark, const EnteredValues& entered);
  void ShowEditError(const dao::EngineError& error);
  /// Whether the cells that were entered still hold what the grid shows.
  [[nodiscard]] bool IsAsShown(dao::Recordset& rows, const EnteredValues& entered) const;
  /// What was entered in this column before.
  [[nodiscard]] QStringList SuggestionsOf(int column) const;
  /// False when the user does not stand by a measured value that looks mistyped.
  [[nodiscard]] bool ConfirmUnusual(dao::Recordset& row, const EnteredValues& entered);
  /// False when a value was emptied by mistake.
  [[nodiscard]] bool ConfirmEmptied(const EnteredValues& entered);
  void NoteEntries(int row, const EnteredValues& entered);
  struct Cell {
    int row = 0;
    int column = 0;
  };
  [[nodiscard]] std::optional<Cell> EntryToTakeBack();
  /// A cell by its exposure, in whatever row that stands.
  struct ExposureCell {
    std::int64_t id = 0;
    int column = 0;
  };
  /// Nothing when the exposure is not shown.
  [[nodiscard]] std::optional<Cell> CellAt(const ExposureCell& place) const;
  void RememberPlace();
  void Refuse(const struct EditDecision& decision);

  std::optional<ui::DataFailure> UnboundReadDataEx(ui::RowBuffer& rowBuf,
                                                   const std::optional<std::int64_t>& startLocation,
                                                   std::int64_t offset,
                                                   std::optional<std::int64_t>& approximatePosition) override;
  std::optional<ui::DataFailure> UnboundWriteData(const ui::RowBuffer& rowBuf,
                                                  std::int64_t writeLocation) override;
  void BeforeColEdit(int colIndex, int keyAscii, bool& cancel) override;
  void ButtonClick(int colIndex) override;
  void HeadClick(int colIndex) override;
  void Error(int dataError, int& response) override;
  void EditRefused() override;
  void RowColChange() override;
  [[nodiscard]] QString CellNote(std::int64_t bookmark, int colIndex) override;
  [[nodiscard]] QString CellTip(std::int64_t bookmark, int colIndex) override;
  void Undo() override { TakeBackEntry(); }
  bool CopyProgress(std::int64_t copied, std::int64_t selected) override;

  [[nodiscard]] int ColumnCount() const override { return grid_->ColumnCount(); }
  [[nodiscard]] int Width(int column) const override { return grid_->ColumnWidth(column); }
  void SetWidth(int column, int width) override;

  ViewContext context_;
  core::RememberedTexts codeTexts_{context_.texts};
  ResultsHost& host_;
  ui::TDBGrid* grid_;
  CTDBGColumnsINI columnsIni_;
  QTimer countTimer_;
  RowFilter filter_{context_.scheme, context_.shortDate};
  frmFind* find_ = nullptr;
  QTimer filterTimer_;
  std::optional<LogWatch> watch_;  // of a log on a server
  QTimer watchTimer_;
  bool isAway_ = false;       // the server, when it was last asked for something
  QString wasFirst_;          // of the entry that was refused last
  bool entryFailed_ = false;  // it may be stored the next time
  QElapsedTimer filterShown_;
  QLabel* sums_ = nullptr;
  QTimer sumTimer_;
  std::optional<Tally> tally_;  // as long as it is being read
  bool sumsOfMarked_ = false;
  int storedDigit_ = 0;  // width of a digit when the columns were kept; 0 when that is not known

  std::string recordSource_;
  std::string headline_;
  std::vector<ExposureCell> entered_;  // since the selection was opened, the latest last
  std::optional<ExposureCell> here_;   // where the user went last
  bool rebinding_ = false;             // the cell that becomes the current one is not where the user went
  std::unique_ptr<QProgressDialog> copying_;
  std::unique_ptr<dao::Recordset> all_;        // the selection's rows
  std::unique_ptr<dao::Recordset> data1_;      // those shown; its current row is the one edited
  std::unique_ptr<dao::Recordset> rowSource_;  // a fresh clone for each read
  bool populated_ = true;
};

}  // namespace varnlog::logview
