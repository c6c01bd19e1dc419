#include "logview/frmResults.h"

#include <algorithm>

#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "db/modCommon.h"
#include "logview/CRGBColorINI.h"
#include "logview/CellMarks.h"
#include "logview/Columns.h"
#include "logview/EditRules.h"
#include "logview/GridPlace.h"
#include "logview/PendingEdits.h"
#include "logview/Selection.h"
#include "logview/WriteRow.h"
#include "ui/QtText.h"

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr std::string_view kColumnsSection = "GridColumns";
constexpr std::string_view kDigitKey = "DigitWidth";

// A slice takes a few milliseconds, so that keys and mouse are answered while a million rows are counted.
constexpr std::int64_t kRowsPerSlice = 20'000;

// Margins, and the mark of the sorted column.
constexpr int kHeadingExtra = 30;

// Margins, and the button that opens the list.
constexpr int kListExtra = 44;

class HourGlass {
 public:
  HourGlass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~HourGlass() { QApplication::restoreOverrideCursor(); }
  HourGlass(const HourGlass&) = delete;
  HourGlass& operator=(const HourGlass&) = delete;
};

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

frmResults::frmResults(const ViewContext& context, ResultsHost& host, QWidget* parent)
    : QWidget(parent), context_(context), host_(host), grid_(new ui::TDBGrid), columnsIni_(context.ini) {
  setObjectName("frmResults");
  setAttribute(Qt::WA_DeleteOnClose);
  grid_->setObjectName("TDBGrid1");
  grid_->setAccessibleName(ui::Caption(context_.texts, "RS_ACC_GRID"_key));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  find_ = new frmFind(context_.texts,
                      {.changed =
                           [this](const FindQuery& query) {
                             filter_.SetQuery(query);
                             FilterChanged();
                           },
                       .toRows = [this] { grid_->setFocus(); },
                       .ended = [this] { EndFind(); }},
                      this);
  layout->addWidget(find_);
  layout->addWidget(grid_);
  setFocusProxy(grid_);

  columnsIni_.SetIniFile(context_.globals.IniFileGl);
  columnsIni_.SetSection(kColumnsSection);
  columnsIni_.SetKeyName("Widths");
  columnsIni_.SetTDBGrid(this);
  grid_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(grid_, &QWidget::customContextMenuRequested, this, &frmResults::ShowContextMenu);
  QHeaderView* const headings = grid_->horizontalHeader();
  headings->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(headings, &QWidget::customContextMenuRequested, this, &frmResults::ShowHeadingMenu);
  countTimer_.setInterval(0);
  connect(&countTimer_, &QTimer::timeout, this, &frmResults::CountFurtherRows);
  filterTimer_.setInterval(0);
  connect(&filterTimer_, &QTimer::timeout, this, &frmResults::ReadForFilter);

  LoadColors();
  BuildColumns();
  grid_->SetEvents(this);
  InitData();
  LimitInput();
  RestoreColumns();
  host_.RefreshCommands();
}

frmResults::~frmResults() {
  grid_->SetEvents(nullptr);
}

void frmResults::LoadColors() {
  const GridColors stored = LoadGridColors(context_.ini, context_.globals.IniFileGl);
  ui::GridColors colors = ui::GridColors::Default();
  colors.lockedBack = ui::ColorFromStored(stored.lockedBack);
  colors.lockedFore = ui::ColorFromStored(stored.lockedFore);
  colors.editFore = ui::ColorFromStored(stored.editFore);
  colors.editBack = ui::ColorFromStored(stored.editBack);
  colors.noneEditBack = ui::ColorFromStored(stored.noneEditBack);
  grid_->SetColors(colors);
  grid_->SetSortTexts(ui::Caption(context_.texts, "RS_ACC_SORTASC"_key),
                      ui::Caption(context_.texts, "RS_ACC_SORTDESC"_key));
  grid_->SetStateText(ui::CellState::kEdit, ui::Caption(context_.texts, "RS_STATE_OPEN"_key));
  grid_->SetStateText(ui::CellState::kPending, ui::Caption(context_.texts, "RS_STATE_PENDING"_key));
  grid_->SetStateText(ui::CellState::kLocked, ui::Caption(context_.texts, "RS_STATE_LOCKED"_key));
  grid_->SetStateText(ui::CellState::kNoneEdit, ui::Caption(context_.texts, "RS_STATE_NEVER"_key));
}

void frmResults::BuildColumns() {
  std::vector<ui::GridColumn> columns;
  for (int i = 0; i < kColumnCount; ++i) {
    const Column& column = kColumns.at(static_cast<std::size_t>(i));
    ui::GridColumn shown;
    shown.heading = ui::ToQString(ColumnHeading(i, context_.texts));
    shown.tip = ui::Caption(context_.texts, core::TextKey(column.tipKey));
    shown.width = std::max(fontMetrics().horizontalAdvance(QLatin1Char('0')) * column.digits,
                           fontMetrics().horizontalAdvance(shown.heading) + kHeadingExtra);
    shown.editable = column.IsWritten();
    shown.alignment = column.isNumber ? Qt::AlignRight : Qt::AlignLeft;
    if (column.IsWritten() && column.editFlag.empty()) {
      shown.openText = ui::Caption(context_.texts, "RS_STATE_ALWAYS"_key);
    }
    if (column.IsList()) shown.list.append(QString());
    for (const core::TextKey choice : column.choices) {
      shown.list.append(ui::Caption(context_.texts, choice));
      shown.width = std::max(shown.width, fontMetrics().horizontalAdvance(shown.list.back()) + kListExtra);
    }
    columns.push_back(std::move(shown));
  }
  grid_->SetColumns(std::move(columns));
  ApplyReadOnly();
}

void frmResults::LimitInput() {
  if (!data1_) return;
  for (int column = 0; column < kColumnCount; ++column) {
    grid_->SetMaxLength(column, InputLimit(*data1_, column));
  }
}

void frmResults::InitData() {
  if (!grid_->CommitEdit()) return;
  const SelectionView view = BuildSelection(context_.globals, context_.texts, context_.shortDate);
  // The frame shows this behind the headline, in brackets.
  setWindowTitle(ui::ToQString(db::FileNamePart(context_.globals.strDataFileGl)));
  if (!view.headline.empty()) {
    headline_ = view.headline;
    host_.SetCaption(view.headline);
    ShowIcon(view.icon);
  }
  const auto place = data1_ && view.sql == recordSource_ ? PlaceIn(*data1_, *grid_) : std::nullopt;
  if (OpenRows(view.sql) && place && data1_) ReturnTo(*place, *data1_, *grid_);
}

/// The frame has an icon of its own and takes this window's only once.
void frmResults::ShowIcon(const std::string& key) {
  setWindowIcon(host_.PictureOf(key));
  if (QWidget* frame = parentWidget()) frame->setWindowIcon(windowIcon());
}

void frmResults::ShowPending() {
  if (!grid_->CommitEdit()) return;
  // None of them may be left out.
  find_->hide();
  filter_.SetQuery({});
  filter_.SetOnlyIncomplete(false);
  headline_ = context_.texts.GetText("RS_PENDING"_key);
  host_.SetCaption(headline_);
  (void)OpenRows(PendingRows(context_.edits));
}

bool frmResults::OpenRows(const std::string& sql) {
  countTimer_.stop();
  recordSource_ = sql;
  filterTimer_.stop();
  rowSource_.reset();
  data1_.reset();
  all_.reset();
  entered_.clear();
  populated_ = true;
  std::int64_t count = 0;
  grid_->SetEmptyText(ui::Caption(context_.texts, "RS_EMPTY"_key));
  try {
    const HourGlass hourGlass;
    if (const auto& log = context_.globals.LogEngineGl->Database()) {
      all_ = log->OpenRecordset(sql, dao::RecordsetType::kDynaset);
      populated_ = all_->Populate(kRowsPerSlice);
      filter_.Renew(log);
      data1_ = filter_.IsActive() ? filter_.Shown(*all_) : all_->Clone();
      count = data1_->RecordCount();
    }
  } catch (const dao::EngineError& error) {
    data1_.reset();
    all_.reset();
    grid_->SetEmptyText(ui::Caption(context_.texts, "RS_UNREADABLE"_key));
    grid_->ReBind(0);
    host_.ShowRowCount(0, true);
    ShowError(error);
    return false;
  }
  grid_->ReBind(count);
  MarkSort();
  ShowCounts();
  (populated_ ? filterTimer_ : countTimer_).start();
  return true;
}

std::unique_ptr<dao::Recordset> frmResults::ShownRows() const {
  if (!data1_) return nullptr;
  if (data1_->RecordCount() == 0) return data1_->Only({});
  auto rows = data1_->Clone();
  rows->MoveFirst();
  return rows;
}

std::vector<int> frmResults::ShownColumns() const {
  std::vector<int> shown;
  for (int i = 0; i < kColumnCount; ++i) {
    if (!grid_->isColumnHidden(i)) shown.push_back(i);
  }
  return shown;
}

void frmResults::CountFurtherRows() {
  try {
    populated_ = all_->Populate(kRowsPerSlice);
  } catch (const dao::EngineError& error) {
    populated_ = true;
    countTimer_.stop();
    ShowError(error);
    return;
  }
  if (populated_) {
    countTimer_.stop();
    filterTimer_.start();
  }
  if (filter_.IsActive()) return;
  grid_->SetApproximateCount(data1_->RecordCount());
  ShowCounts();
}

int frmResults::DigitWidth() const {
  return std::max(grid_->fontMetrics().horizontalAdvance(QLatin1Char('0')), 1);
}

void frmResults::SaveColumns() {
  columnsIni_.SaveColumns();
  context_.ini.WriteString(kColumnsSection, kDigitKey, std::to_string(DigitWidth()),
                           context_.globals.IniFileGl);
}

/// The widths were kept in pixels of the font of that time.
void frmResults::RestoreColumns() {
  storedDigit_ = context_.ini.ReadInteger(kColumnsSection, kDigitKey, context_.globals.IniFileGl);
  columnsIni_.RestoreColumns();
  HideStoredColumns();
}

void frmResults::SetWidth(int column, int width) {
  const std::int64_t scaled = storedDigit_ > 0 ? std::int64_t{width} * DigitWidth() / storedDigit_ : width;
  grid_->SetColumnWidth(column, static_cast<int>(std::min<std::int64_t>(scaled, ui::TDBGrid::kWidest)));
}

void frmResults::ReloadGrid() {
  SaveColumns();
  BuildColumns();
  LimitInput();
  RestoreColumns();
  MarkSort();
}

void frmResults::CloseData() {
  countTimer_.stop();
  filterTimer_.stop();
  filter_.Close();
  grid_->SetEvents(nullptr);
  grid_->ReBind(0);
  rowSource_.reset();
  data1_.reset();
  all_.reset();
}

void frmResults::ApplyReadOnly() {
  const bool readOnly = context_.globals.ReadOnlyGl;
  grid_->SetAllowUpdate(!readOnly);
  grid_->SetStateText(ui::CellState::kLocked, ui::Caption(context_.texts, readOnly ? "RS_STATE_READONLY"_key
                                                                                   : "RS_STATE_LOCKED"_key));
  grid_->Refresh();
}

void frmResults::EditRefused() {
  context_.Messages().Inform(ReadOnlyReason(context_.globals));
}

bool frmResults::CopyProgress(std::int64_t copied, std::int64_t selected) {
  if (copied == selected) {
    copying_.reset();
    return true;
  }
  if (!copying_) {
    copying_ = std::make_unique<QProgressDialog>(ui::Caption(context_.texts, "RS_COPYING"_key),
                                                 ui::Caption(context_.texts, "GL_CANCEL"_key), 0,
                                                 static_cast<int>(selected), window());
    copying_->setObjectName("dlgCopying");
    copying_->setWindowTitle(ui::Caption(context_.texts, "GL_TITLE"_key));
    copying_->setWindowModality(Qt::WindowModal);
  }
  copying_->setValue(static_cast<int>(copied));
  if (!copying_->wasCanceled()) return true;
  copying_.reset();
  return false;
}

void frmResults::closeEvent(QCloseEvent* event) {
  if (!grid_->CommitEdit()) {
    event->ignore();
    return;
  }
  host_.SetCaption(core::FilledText(context_.texts, "RS_HEADLINE"_key,
                                    {{"strDataFileGl", context_.globals.strDataFileGl}}));
  SaveColumns();
  CloseData();
  host_.ResultsClosed();
  event->accept();
}

void frmResults::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange) host_.RefreshCommands();
}

void frmResults::ShowError(const dao::EngineError& error) {
  if (error.number() == dao::ErrorNumber::kFileReplaced) return host_.LogReplaced();
  context_.Messages().ShowText(core::EngineErrorText(context_.texts, error));
}

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
    MarkChanged(Log(), FillBuffer(*rowSource_, display, context_.edits, context_.texts, rowBuf), rowBuf);
    if (position >= 0) approximatePosition = position;
    if (populated_) grid_->SetApproximateCount(data1_->RecordCount());
  } catch (const dao::EngineError& error) {
    rowBuf.SetRowCount(0);
    return FailureOf(context_.texts, error);
  }
  return std::nullopt;
}

/// An open value that is emptied would be locked empty when the log is closed; in a list, the empty entry is
/// chosen.
bool frmResults::ConfirmEmptied(const ui::RowBuffer& entered) {
  for (int column = 0; column < kColumnCount; ++column) {
    const auto& value = entered.Value(0, column);
    const Column& emptied = kColumns.at(static_cast<std::size_t>(column));
    if (!value || !value->isEmpty() || emptied.IsList() || emptied.editFlag.empty()) continue;
    return context_.Messages().Confirm("RS_ASK_EMPTY"_key,
                                       {{"strColumn", ColumnHeading(column, context_.texts)}});
  }
  return true;
}

void frmResults::NoteEntries(int row, const RowBuffer& entered) {
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
  } catch (const dao::EngineError& error) {
    ShowEditError(error);
  }
  grid_->RefetchRow(cell->row);
  host_.RefreshCommands();
}

/// Nobody overwrites a correction that another workstation made and that he has not seen.
bool frmResults::IsAsShown(dao::Recordset& rows, const ui::RowBuffer& entered) const {
  const RowDisplay display(rows, codeTexts_, context_.scheme, context_.shortDate);
  const int row = static_cast<int>(rows.AbsolutePosition());
  for (int column = 0; column < kColumnCount; ++column) {
    if (!entered.Value(0, column)) continue;
    if (grid_->CellText(row, column) != ui::ToQString(display.Text(column))) return false;
  }
  return true;
}

std::optional<ui::DataFailure> frmResults::UnboundWriteData(const ui::RowBuffer& rowBuf,
                                                            std::int64_t writeLocation) {
  RowBuffer entered;
  for (int column = 0; column < kColumnCount; ++column) {
    if (const auto& value = rowBuf.Value(0, column)) {
      entered.at(static_cast<std::size_t>(column)) = ui::FromQString(*value);
    }
  }
  if (!ConfirmEmptied(rowBuf)) return std::nullopt;
  try {
    const auto rows = data1_->Clone();
    rows->SetBookmark(dao::Bookmark{writeLocation});
    if (!IsAsShown(*rows, rowBuf)) {
      return FailureOf(context_.texts, dao::EngineError(dao::ErrorNumber::kDataChanged, ""));
    }
    const RowWritten written = WriteRow(*rows, dao::Bookmark{writeLocation}, entered, context_.texts,
                                        context_.scheme, context_.edits);
    if (written.isLocked) return ui::DataFailure{static_cast<std::int32_t>(DataError::kLocked), {}};
    NoteEntries(static_cast<int>(rows->AbsolutePosition()), entered);
    NoteMissing(*rows);
  } catch (const dao::EngineError& error) {
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

void frmResults::HeadClick(int colIndex) {
  if (colIndex == kNumberColumn) {
    context_.user.Beep();
    return;
  }
  if (colIndex < 0 || colIndex >= kColumnCount || !grid_->CommitEdit()) return;
  (void)OpenRows(SortByColumn(recordSource_, colIndex));
}

/// The sort state is kept nowhere but in the query, so it is read back from there.
void frmResults::MarkSort() {
  std::optional<int> sorted;
  Qt::SortOrder order = Qt::AscendingOrder;
  for (int i = 0; i < kColumnCount; ++i) {
    const Column& column = kColumns.at(static_cast<std::size_t>(i));
    const std::string ascending = column.SortClause(false);
    if (ascending.empty()) continue;
    const bool descending = recordSource_.ends_with(column.SortClause(true));
    if (!descending && !recordSource_.ends_with(ascending)) continue;
    sorted = i;
    order = descending ? Qt::DescendingOrder : Qt::AscendingOrder;
  }
  grid_->SetSortIndicator(sorted, order);
}

void frmResults::Error(int dataError, int& response) {
  if (dataError == static_cast<int>(dao::ErrorNumber::kFileReplaced)) {
    response = 0;
    return host_.LogReplaced();
  }
  grid_->Refresh();
  if (const auto key = DataErrorKey(dataError)) {
    const bool isRule = dataError == static_cast<std::int32_t>(DataError::kLocked);
    context_.Messages().Show(
        {.key = *key, .icon = isRule ? core::MessageIcon::kInformation : core::MessageIcon::kCritical});
    host_.RefreshCommands();
    response = 0;
    return;
  }
  // A failure without a text of its own is left to the grid as well, which beeps.
  context_.Messages().ShowText(ui::FromQString(grid_->ErrorText()));
}

}  // namespace varnlog::logview
