#include <algorithm>
#include <utility>

#include "core/EngineMessages.h"
#include "logview/CellMarks.h"
#include "logview/Columns.h"
#include "logview/EditRules.h"
#include "logview/Plausibility.h"
#include "logview/Suggestions.h"
#include "logview/WriteRow.h"
#include "logview/frmResults.h"
#include "ui/QtText.h"

// What the grid asks of the log view: rows to show, and values to store.

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

ui::CellState ShownState(CellState state) {
  switch (state) {
    case CellState::kEdit:
      return ui::CellState::kEdit;
    case CellState::kLocked:
      return ui::CellState::kLocked;
    case CellState::kNoneEdit:
      return ui::CellState::kNoneEdit;
    case CellState::kPlain:
      break;
  }
  return ui::CellState::kPlain;
}

/// An open value whose correction waits for the log to be closed.
bool IsPending(dao::Recordset& rows, int column, const CEdits& edits) {
  if (edits.Count() == 0) return false;
  const std::string_view flag = kColumns.at(static_cast<std::size_t>(column)).editFlag;
  if (flag.empty()) return false;
  return edits.Contains(CEdit{std::string(rows.Fields("tXrayCulIntIDPk").Text()), std::string(flag)}.Key());
}

ui::DataFailure FailureOf(const core::TextLookup& texts, const dao::EngineError& error) {
  return {DataErrorOf(error.number()), ui::ToQString(core::EngineErrorText(texts, error))};
}

/// A refused entry can be handed in again, but never over a value that its author has not seen.
ui::DataFailure WriteFailureOf(const core::TextLookup& texts, const dao::EngineError& error) {
  ui::DataFailure failure = FailureOf(texts, error);
  if (core::IsServerAway(error.number()))
    failure.text = ui::ToQString(
        core::EngineErrorText(texts, error.number(), error.what(), texts.GetText("RS_ENTRYSTAYS"_key)));
  failure.keepsEntry = error.number() != dao::ErrorNumber::kDataChanged &&
                       error.number() != dao::ErrorNumber::kFileReplaced &&
                       failure.number != static_cast<std::int32_t>(DataError::kRecordDeleted);
  return failure;
}

void FillRow(dao::Recordset& rows, const RowDisplay& display, const CellStates& states, const CEdits& edits,
             ui::RowBuffer& rowBuf, int row) {
  for (int column = 0; column < rowBuf.ColumnCount(); ++column) {
    rowBuf.SetValue(row, column, ui::ToQString(display.Text(column)));
    const ui::CellState state = ShownState(states.Of(column));
    const bool pending = state == ui::CellState::kEdit && IsPending(rows, column, edits);
    rowBuf.SetState(row, column, pending ? ui::CellState::kPending : state);
  }
}

/// Keeps its place until the view is loaded anew, so that the numbers of the rows below stay.
void FillDeletedRow(const dao::Recordset& rows, const core::TextLookup& texts, ui::RowBuffer& rowBuf,
                    int row) {
  for (int column = 0; column < rowBuf.ColumnCount(); ++column) {
    rowBuf.SetValue(row, column, QString());
    rowBuf.SetState(row, column, ui::CellState::kPlain);
  }
  rowBuf.SetValue(row, kNumberColumn, QString::number(rows.AbsolutePosition() + 1));
  rowBuf.SetValue(row, kPatientColumn, ui::Caption(texts, "RS_DELETED"_key));
}

/// The rows of `rows` from its current one on, as texts and states. The numbers of their exposures, 0 for a
/// row that is not there any more.
std::vector<std::int64_t> FillBuffer(dao::Recordset& rows, const RowDisplay& display, const CEdits& edits,
                                     const core::TextLookup& texts, ui::RowBuffer& rowBuf) {
  const CellStates states(rows);
  const dao::Field& number = rows.Fields("tXrayCulIntIDPk");
  std::vector<std::int64_t> exposures;
  int filled = 0;
  for (; filled < rowBuf.RowCount() && !rows.IsBOF() && !rows.IsEOF(); ++filled) {
    try {
      FillRow(rows, display, states, edits, rowBuf, filled);
      exposures.push_back(number.Number());
    } catch (const dao::EngineError& error) {
      if (error.number() != dao::ErrorNumber::kRecordDeleted) throw;
      FillDeletedRow(rows, texts, rowBuf, filled);
      exposures.push_back(0);
    }
    rowBuf.SetBookmark(filled, rows.Bookmark().position);
    rows.MoveNext();
  }
  rowBuf.SetRowCount(filled);
  return exposures;
}

}  // namespace

/// A row that another workstation deleted or works on has a text of its own.
void frmResults::ShowEditError(const dao::EngineError& error) {
  const auto key = DataErrorKey(DataErrorOf(error.number()));
  if (!key) return ShowError(error);
  context_.Messages().Critical(*key);
  host_.RefreshCommands();
}

std::optional<ui::DataFailure> frmResults::UnboundReadDataEx(
    ui::RowBuffer& rowBuf, const std::optional<std::int64_t>& startLocation, std::int64_t offset,
    std::optional<std::int64_t>& approximatePosition) {
  if (!data1_ || data1_->RecordCount() == 0) {
    rowBuf.SetRowCount(0);
    return std::nullopt;
  }
  try {
    rowSource_ = data1_->Clone();
    if (startLocation) {
      rowSource_->SetBookmark(dao::Bookmark{*startLocation});
    } else if (offset < 0) {
      rowSource_->MoveLast();
      rowSource_->MoveNext();
    } else {
      rowSource_->MoveFirst();
      rowSource_->MovePrevious();
    }
    rowSource_->Move(offset);
    const std::int64_t position = rowSource_->AbsolutePosition();
    const RowDisplay display(*rowSource_, codeTexts_, context_.scheme, context_.shortDate);
    const auto exposures = FillBuffer(*rowSource_, display, context_.edits, context_.texts, rowBuf);
    MarkChanged(Log(), exposures, rowBuf);
    for (std::size_t row = 0; row < exposures.size(); ++row)
      if (context_.newRows.Contains(exposures[row])) rowBuf.SetNew(static_cast<int>(row));
    if (position >= 0) approximatePosition = position;
    if (populated_) grid_->SetApproximateCount(data1_->RecordCount());
  } catch (const dao::EngineError& error) {
    rowBuf.SetRowCount(0);
    ui::DataFailure failure = FailureOf(context_.texts, error);
    if (core::IsServerAway(error.number())) {
      failure.isKnown = isAway_;
      failure.keepsRows = true;
      ServerIsAway();
    }
    return failure;
  }
  return std::nullopt;
}

/// An open value that is emptied would be locked empty when the log is closed; in a list, the empty entry is
/// chosen.
bool frmResults::ConfirmEmptied(const EnteredValues& entered) {
  for (int column = 0; column < kColumnCount; ++column) {
    const auto& value = entered.at(static_cast<std::size_t>(column));
    const Column& emptied = kColumns.at(static_cast<std::size_t>(column));
    if (!value || !value->empty() || emptied.IsList() || emptied.editFlag.empty()) continue;
    return context_.Messages().Confirm("RS_ASK_EMPTY"_key,
                                       {{"strColumn", ColumnHeading(column, context_.texts)}});
  }
  return true;
}

QStringList frmResults::SuggestionsOf(int column) const {
  QStringList shown;
  try {
    for (const std::string& text :
         SuggestionsFor(Log(), std::string(kColumns.at(static_cast<std::size_t>(column)).field)))
      shown << ui::ToQString(text);
  } catch (const dao::EngineError&) {
    return {};  // typing needs none of them
  }
  return shown;
}

bool frmResults::ConfirmUnusual(dao::Recordset& row, const EnteredValues& entered) {
  for (int column = 0; column < kColumnCount; ++column) {
    const Column& measured = kColumns.at(static_cast<std::size_t>(column));
    const auto& value = entered.at(static_cast<std::size_t>(column));
    if (!value || !measured.isNumber || !measured.IsWritten()) continue;
    const auto why =
        WhyImplausible(Log(), row.Fields("tXraySType").Text(), std::string(measured.field), *value);
    if (!why) continue;
    return context_.Messages().Confirm(why->isNoNumber               ? "RS_ASK_NONUMBER"_key
                                       : why->least == why->greatest ? "RS_ASK_OTHERTHANEVER"_key
                                                                     : "RS_ASK_UNUSUAL"_key,
                                       {{"strColumn", ColumnHeading(column, context_.texts)},
                                        {"strValue", *value},
                                        {"strLeast", why->least},
                                        {"strGreatest", why->greatest}});
  }
  return true;
}

std::string frmResults::CurrentPatient() const {
  return grid_->Row() < 0 ? std::string() : ui::FromQString(grid_->CellText(grid_->Row(), kPatientColumn));
}

void frmResults::NoteEntries(int row, const EnteredValues& entered) {
  const std::int64_t id = data1_->Ids()[static_cast<std::size_t>(row)];
  for (int column = 0; column < kColumnCount; ++column)
    if (entered.at(static_cast<std::size_t>(column))) entered_.push_back({id, column});
}

/// An entry whose exposure is not shown stays for later.
std::optional<frmResults::Cell> frmResults::EntryToTakeBack() {
  const auto isPending = [this](const Cell& cell) {
    return grid_->StateOf(cell.row, cell.column) == ui::CellState::kPending;
  };
  const Cell current{grid_->Row(), grid_->Col()};
  if (current.row >= 0 && isPending(current)) return current;
  for (auto entry = entered_.rbegin(); entry != entered_.rend(); ++entry) {
    const auto cell = CellAt(*entry);
    if (cell && isPending(*cell)) return cell;
  }
  return std::nullopt;
}

void frmResults::TakeBackEntry() {
  const auto cell = context_.globals.ReadOnlyGl ? std::nullopt : EntryToTakeBack();
  const auto bookmark = cell ? grid_->BookmarkOf(cell->row) : std::nullopt;
  if (!bookmark) {
    context_.user.Beep();
    return;
  }
  grid_->SetCurrentCell(cell->row, cell->column);
  try {
    const auto rows = data1_->Clone();
    if (!TakeEntryBack(*rows, dao::Bookmark{*bookmark}, cell->column, context_.edits)) {
      Refuse({.allowed = false, .beep = false, .message = "RS_ERR_CHANGE"_key});
    }
    NoteMissing(*rows);
  } catch (const dao::EngineError& error) {
    ShowEditError(error);
  }
  grid_->RefetchRow(cell->row);
  host_.RefreshCommands();
}

/// Nobody overwrites a correction that another workstation made and that he has not seen.
bool frmResults::IsAsShown(dao::Recordset& rows, const EnteredValues& entered) const {
  const RowDisplay display(rows, codeTexts_, context_.scheme, context_.shortDate);
  const int row = static_cast<int>(rows.AbsolutePosition());
  for (int column = 0; column < kColumnCount; ++column) {
    if (!entered.at(static_cast<std::size_t>(column))) continue;
    if (grid_->CellText(row, column) != ui::ToQString(display.Text(column))) return false;
  }
  return true;
}

void frmResults::NoteWhoWasFirst(std::int64_t bookmark, const EnteredValues& entered) {
  const HistoryText text(codeTexts_, context_.scheme, context_.shortDate);
  try {
    for (int column = 0; column < kColumnCount && wasFirst_.isEmpty(); ++column)
      if (entered.at(static_cast<std::size_t>(column)))
        wasFirst_ = ui::ToQString(NoteOf(Log(), ExposureAt(bookmark), column, text));
  } catch (const dao::EngineError&) {
    return;  // that it was refused is said in any case
  }
}

std::optional<ui::DataFailure> frmResults::UnboundWriteData(const ui::RowBuffer& rowBuf,
                                                            std::int64_t writeLocation) {
  EnteredValues entered;
  for (int column = 0; column < kColumnCount; ++column) {
    if (const auto& value = rowBuf.Value(0, column)) {
      entered.at(static_cast<std::size_t>(column)) = ui::FromQString(*value);
    }
  }
  if (!ConfirmEmptied(entered)) return std::nullopt;
  wasFirst_.clear();
  try {
    const auto rows = data1_->Clone();
    rows->SetBookmark(dao::Bookmark{writeLocation});
    if (!IsAsShown(*rows, entered)) {
      NoteWhoWasFirst(writeLocation, entered);
      return FailureOf(context_.texts, dao::EngineError(dao::ErrorNumber::kDataChanged, ""));
    }
    if (!ConfirmUnusual(*rows, entered))
      return ui::DataFailure{.number = 0, .text = {}, .keepsEntry = true, .isKnown = true};
    const RowWritten written = WriteRow(*rows, dao::Bookmark{writeLocation}, entered, context_.texts,
                                        context_.scheme, context_.edits);
    if (written.isLocked) {
      NoteWhoWasFirst(writeLocation, entered);
      return ui::DataFailure{static_cast<std::int32_t>(DataError::kLocked), {}};
    }
    NoteEntries(static_cast<int>(rows->AbsolutePosition()), entered);
    NoteMissing(*rows);
    if (isAway_) QTimer::singleShot(0, this, &frmResults::LookForNews);
  } catch (const dao::EngineError& error) {
    if (error.number() == dao::ErrorNumber::kDataChanged) NoteWhoWasFirst(writeLocation, entered);
    entryFailed_ = core::IsServerAway(error.number());
    if (entryFailed_) ServerIsAway();
    return WriteFailureOf(context_.texts, error);
  }
  host_.RefreshCommands();
  return std::nullopt;
}

bool frmResults::LocateRow(int row) {
  if (!data1_ || row < 0) return false;
  // The running number is the row's place in the record set plus one.
  data1_->SetAbsolutePosition(grid_->CellText(row, kNumberColumn).toLongLong() - 1);
  return true;
}

std::int64_t frmResults::ExposureAt(std::int64_t bookmark) const {
  const auto row = data1_->Clone();
  row->SetBookmark(dao::Bookmark{bookmark});
  return row->Fields("tXrayCulIntIDPk").Number();
}

std::optional<std::int64_t> frmResults::CurrentExposure() const {
  const auto bookmark = data1_ && grid_->Row() >= 0 ? grid_->BookmarkOf(grid_->Row()) : std::nullopt;
  try {
    return bookmark ? std::optional(ExposureAt(*bookmark)) : std::nullopt;
  } catch (const dao::EngineError&) {
    return std::nullopt;  // deleted meanwhile
  }
}

QString frmResults::CellNote(std::int64_t bookmark, int colIndex) {
  const HistoryText text(codeTexts_, context_.scheme, context_.shortDate);
  return ui::ToQString(NoteOf(Log(), ExposureAt(bookmark), colIndex, text));
}

void frmResults::Refuse(const EditDecision& decision) {
  if (decision.beep) context_.user.Beep();
  if (!decision.message) return;
  context_.Messages().Inform(*decision.message);
  grid_->Refresh();
  host_.RefreshCommands();
}

void frmResults::BeforeColEdit(int colIndex, int /*keyAscii*/, bool& cancel) {
  cancel = true;
  try {
    if (!LocateRow(grid_->Row())) return;
    const EditDecision decision = logview::BeforeColEdit(*data1_, colIndex);
    cancel = !decision.allowed;
    if (cancel) Refuse(decision);
  } catch (const dao::EngineError& error) {
    ShowEditError(error);
  }
}

void frmResults::ButtonClick(int colIndex) {
  try {
    if (!LocateRow(grid_->Row())) return;
    const EditDecision decision = logview::ButtonClick(*data1_, colIndex);
    if (decision.allowed) return;
    grid_->CancelEdit();
    Refuse(decision);
  } catch (const dao::EngineError& error) {
    grid_->CancelEdit();
    ShowEditError(error);
  }
}

void frmResults::Error(int dataError, int& response) {
  if (dataError == static_cast<int>(dao::ErrorNumber::kFileReplaced)) {
    response = 0;
    return host_.LogReplaced();
  }
  // A server that is away need not be asked again.
  if (!core::IsServerAway(static_cast<dao::ErrorNumber>(dataError))) grid_->Refresh();
  if (const auto key = DataErrorKey(dataError)) {
    const bool isRule = dataError == static_cast<std::int32_t>(DataError::kLocked);
    const QString first = std::exchange(wasFirst_, {});
    context_.user.Show({.text = core::FilledText(context_.texts, *key, {}) +
                                (first.isEmpty() ? std::string() : "\n\n" + ui::FromQString(first)),
                        .title = context_.texts.GetText(core::kProgramTitle),
                        .icon = isRule ? core::MessageIcon::kInformation : core::MessageIcon::kCritical,
                        .key = std::string(key->name())});
    host_.RefreshCommands();
    response = 0;
    return;
  }
  if (std::exchange(entryFailed_, false)) {
    const auto answer =
        context_.Messages().ShowText(ui::FromQString(grid_->ErrorText()), core::MessageIcon::kCritical,
                                     core::MessageButtons::kRetryCancel);
    if (answer == core::MessageAnswer::kRetry)
      QTimer::singleShot(0, grid_, [this] { static_cast<void>(grid_->CommitEdit()); });
    return;
  }
  // A failure without a text of its own is left to the grid as well, which beeps.
  context_.Messages().ShowText(ui::FromQString(grid_->ErrorText()));
}

}  // namespace varnlog::logview
