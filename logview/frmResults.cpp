#include "logview/frmResults.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QMainWindow>
#include <QStatusBar>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "db/dao/ServerLink.h"
#include "db/modCommon.h"
#include "logview/CRGBColorINI.h"
#include "logview/Columns.h"
#include "logview/EditRules.h"
#include "logview/GridPlace.h"
#include "logview/PendingEdits.h"
#include "logview/Selection.h"
#include "ui/QtText.h"

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr std::string_view kColumnsSection = "GridColumns";
constexpr std::string_view kDigitKey = "DigitWidth";

// A slice takes a few milliseconds, so that keys and mouse are answered while a million rows are counted.
constexpr std::int64_t kRowsPerSlice = 20'000;

// The server's announcements are heard that often, and after a failure, which takes a moment each time, not
// so soon again.
constexpr int kMillisecondsBetweenLooks = 500;
constexpr int kMillisecondsAfterFailure = 5'000;
constexpr int kMillisecondsUnasked = 700;
constexpr int kMillisecondsReconnected = 5'000;

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
  layout->addWidget(sums_ = new QLabel);
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
  connect(&watchTimer_, &QTimer::timeout, this, &frmResults::LookForNews);
  BuildSums();

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
  if (isAway_) Say({});
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
  grid_->SetNewText(ui::Caption(context_.texts, "RS_STATE_NEW"_key));
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
    if (column.suggests) shown.suggestions = [this, i] { return SuggestionsOf(i); };
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

bool frmResults::InitData() {
  if (!grid_->CommitEdit()) return true;
  const SelectionView view = BuildSelection(context_.globals, context_.texts, context_.shortDate);
  // The frame shows this behind the headline, in brackets.
  setWindowTitle(ui::ToQString(db::FileNamePart(context_.globals.strDataFileGl)));
  const auto place = data1_ && view.sql == recordSource_ ? PlaceIn(*data1_, *grid_) : std::nullopt;
  const bool isOpen = OpenRows(view.sql);
  if (!isOpen && data1_) return false;
  if (!view.headline.empty()) {
    headline_ = view.headline;
    host_.SetCaption(view.headline);
    ShowIcon(view.icon);
  }
  if (place && data1_) ReturnTo(*place, *data1_, *grid_);
  return true;
}

void frmResults::ReloadInPlace() {
  if (!data1_ || grid_->IsEditing()) return;
  const View view = ViewOf(*data1_, *grid_);
  rebinding_ = true;
  if (OpenRows(recordSource_) && data1_) Restore(view, *data1_, *grid_);
  rebinding_ = false;
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
  if (!OpenRows(PendingRows(context_.edits)) && data1_) return;
  headline_ = context_.texts.GetText("RS_PENDING"_key);
  host_.SetCaption(headline_);
}

void frmResults::LetGoOfRows() {
  countTimer_.stop();
  filterTimer_.stop();
  sumTimer_.stop();
  watchTimer_.stop();
  tally_.reset();
  sums_->clear();
  rowSource_.reset();
  data1_.reset();
  all_.reset();
  watch_.reset();
  entered_.clear();
}

bool frmResults::OpenRows(const std::string& sql) {
  try {
    const HourGlass hourGlass;
    const auto& log = context_.globals.LogEngineGl->Database();
    std::optional<LogWatch> watch;
    // Before the rows are read, so that no change falls between the two.
    if (log && dao::IsServerLink(log->Name())) watch.emplace(log);
    auto rows = log ? log->OpenRecordset(sql, dao::RecordsetType::kDynaset) : nullptr;
    const bool isPopulated = !rows || rows->Populate(kRowsPerSlice);
    LetGoOfRows();
    recordSource_ = sql;
    populated_ = isPopulated;
    all_ = std::move(rows);
    watch_ = std::move(watch);
    if (watch_) watchTimer_.start(kMillisecondsBetweenLooks);
    if (all_) {
      filter_.Renew(log);
      data1_ = filter_.IsActive() ? filter_.Shown(*all_) : all_->Clone();
    }
    grid_->SetEmptyText(ui::Caption(context_.texts, "RS_EMPTY"_key));
    grid_->ReBind(data1_ ? data1_->RecordCount() : 0);
  } catch (const dao::EngineError& error) {
    RowsUnreadable(sql, error);
    return false;
  }
  MarkSort();
  ShowCounts();
  (populated_ ? filterTimer_ : countTimer_).start();
  return true;
}

void frmResults::RowsUnreadable(const std::string& sql, const dao::EngineError& error) {
  if (data1_ && core::IsServerAway(error.number())) {
    ServerIsAway();
    context_.Messages().ShowText(core::EngineErrorText(context_.texts, error.number(), error.what(),
                                                       context_.texts.GetText("RS_AWAY"_key)));
    return;
  }
  LetGoOfRows();
  recordSource_ = sql;
  populated_ = true;
  grid_->SetEmptyText(ui::Caption(context_.texts, "RS_UNREADABLE"_key));
  grid_->ReBind(0);
  host_.ShowRowCount(0, true);
  if (core::IsServerAway(error.number())) watchTimer_.start(kMillisecondsAfterFailure);
  ShowError(error);
}

// An entry being made is compared with what its author sees, so that stays until he is done. Nobody has asked
// for this, so nobody is shown that a server is waited for.
void frmResults::LookForNews() {
  if (!populated_ || grid_->IsEditing() || QApplication::activeModalWidget() != nullptr) return;
  QElapsedTimer begin;
  begin.start();
  const dao::WaitingScope unasked(dao::DBEngine::Instance(),
                                  [&begin] { return begin.elapsed() < kMillisecondsUnasked; });
  try {
    if (!watch_) watch_.emplace(context_.globals.LogEngineGl->Database());
    const LogWatch::News news = watch_->Look();
    if (std::exchange(isAway_, false) || !data1_) return Reconnected();
    if (news == LogWatch::News::kExposures) return ReloadInPlace();
    if (news == LogWatch::News::kNone) return;
    grid_->Refresh();
    host_.CurrentRowChanged();
  } catch (const dao::EngineError&) {
    ServerIsAway();
  }
}

void frmResults::ServerIsAway() {
  if (!watchTimer_.isActive()) return;
  isAway_ = true;
  Say(ui::Caption(context_.texts, "RS_AWAY"_key));
  watchTimer_.start(kMillisecondsAfterFailure);
}

void frmResults::Reconnected() {
  watchTimer_.start(kMillisecondsBetweenLooks);
  if (data1_)
    ReloadInPlace();
  else
    (void)OpenRows(recordSource_);
  Say(ui::Caption(context_.texts, "MN_RECONNECTED"_key), kMillisecondsReconnected);
}

// In the status bar, until there is something else to show there.
void frmResults::Say(const QString& text, int milliseconds) {
  if (auto* const frame = qobject_cast<QMainWindow*>(window()))
    frame->statusBar()->showMessage(text, milliseconds);
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
  LetGoOfRows();
  filter_.Close();
  grid_->SetEvents(nullptr);
  grid_->ReBind(0);
}

void frmResults::ApplyReadOnly() {
  const bool readOnly = context_.globals.ReadOnlyGl;
  grid_->SetAllowUpdate(!readOnly);
  grid_->SetStateText(ui::CellState::kLocked, ui::Caption(context_.texts, readOnly ? "RS_STATE_READONLY"_key
                                                                                   : "RS_STATE_LOCKED"_key));
  grid_->Refresh();
}

void frmResults::EditRefused() {
  context_.Messages().Inform(host_.ReadOnlyReason());
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

}  // namespace varnlog::logview
