#include <algorithm>

#include "logview/frmResults.h"
#include "ui/QtText.h"

// Finding among the rows of a selection: what is looked for, and what is missing.

namespace varnlog::logview {

using core::literals::operator""_key;

namespace {

constexpr std::int64_t kRowsPerSlice = 20'000;

// While the log is being read, rows appear at this pace.
constexpr int kMillisecondsBetweenViews = 150;

// Another workstation is writing; what nobody waits for is read a little later.
constexpr int kMillisecondsUntilRetry = 1'000;

}  // namespace

void frmResults::BeginFind() {
  find_->Begin();
  ShowCounts();
}

void frmResults::EndFind() {
  find_->hide();
  filter_.SetQuery({});
  FilterChanged();
  grid_->setFocus();
}

void frmResults::SetOnlyIncomplete(bool only) {
  filter_.SetOnlyIncomplete(only);
  FilterChanged();
}

void frmResults::RowColChange() {
  if (!rebinding_) RememberPlace();
  host_.CurrentRowChanged();
}

void frmResults::RememberPlace() {
  const int row = grid_->Row();
  if (!data1_ || row < 0 || row >= data1_->RecordCount()) return;
  here_ = ExposureCell{data1_->Ids()[static_cast<std::size_t>(row)], grid_->Col()};
}

std::optional<frmResults::Cell> frmResults::CellAt(const ExposureCell& place) const {
  const auto ids = data1_->Ids();
  const auto found = std::ranges::find(ids, place.id);
  if (found == ids.end()) return std::nullopt;
  return Cell{static_cast<int>(found - ids.begin()), place.column};
}

void frmResults::FilterChanged() {
  ApplyFilter();
  if (populated_ && all_) filterTimer_.start();
}

std::string frmResults::Headline() const {
  std::string headline = headline_;
  if (filter_.OnlyIncomplete()) {
    headline = core::FilledText(context_.texts, "FD_INCOMPLETE"_key, {{"strHeadline", headline}});
  }
  if (filter_.Query().IsEmpty()) return headline;
  return core::FilledText(context_.texts, "FD_HEADLINE"_key,
                          {{"strHeadline", headline}, {"strText", filter_.Query().text}});
}

void frmResults::ShowCounts() {
  const std::int64_t shown = data1_ ? data1_->RecordCount() : 0;
  const bool complete = populated_ && filter_.IsComplete();
  host_.ShowRowCount(shown, complete);
  if (!all_) return host_.ShowIncomplete(std::nullopt);
  find_->ShowCount(shown, all_->RecordCount(), complete);
  host_.ShowIncomplete(populated_ ? filter_.IncompleteAmong(*all_) : std::nullopt);
  BeginSums();
}

void frmResults::ApplyFilter() {
  if (!all_ || !grid_->CommitEdit()) return;
  filterShown_.start();
  auto shown = filter_.IsActive() ? filter_.Shown(*all_) : all_->Clone();
  if (!std::ranges::equal(data1_->Ids(), shown->Ids())) {
    rebinding_ = true;
    rowSource_.reset();
    data1_ = std::move(shown);
    grid_->SetEmptyText(ui::Caption(context_.texts, filter_.IsActive() ? "FD_NOTHING"_key : "RS_EMPTY"_key));
    grid_->ReBind(data1_->RecordCount());
    if (const auto place = here_ ? CellAt(*here_) : std::nullopt)
      grid_->SetCurrentCell(place->row, place->column);
    rebinding_ = false;
  }
  ShowCounts();
}

void frmResults::ReadForFilter() {
  filterTimer_.setInterval(0);
  try {
    const bool complete = filter_.Read(kRowsPerSlice);
    if (complete) filterTimer_.stop();
    const bool isDue = complete || filterShown_.hasExpired(kMillisecondsBetweenViews);
    if (isDue && filter_.IsActive()) return ApplyFilter();
    if (complete) ShowCounts();
  } catch (const dao::EngineError& error) {
    filterTimer_.stop();
    if (error.number() == dao::ErrorNumber::kFileInUse) return filterTimer_.start(kMillisecondsUntilRetry);
    ShowError(error);
  }
}

void frmResults::NoteMissing(dao::Recordset& row) {
  bool missing = false;
  for (int column = 0; column < kColumnCount && !missing; ++column) missing = IsMissing(row, column);
  filter_.Note(row.Fields("tXrayCulIntIDPk").Number(), missing);
  ShowCounts();
}

std::optional<int> frmResults::MissingIn(std::int64_t row, int column, int step) {
  try {
    data1_->SetAbsolutePosition(row);
    for (; column >= 0 && column < kColumnCount; column += step) {
      if (!grid_->isColumnHidden(column) && IsMissing(*data1_, column)) return column;
    }
  } catch (const dao::EngineError& error) {
    if (error.number() != dao::ErrorNumber::kRecordDeleted) throw;
  }
  return std::nullopt;
}

void frmResults::GoToMissing(int step) {
  if (!data1_ || data1_->RecordCount() == 0 || !grid_->CommitEdit()) return context_.user.Beep();
  try {
    std::int64_t row = std::max(grid_->Row(), 0);
    int column = grid_->Col() + step;
    for (;;) {
      if (const auto found = MissingIn(row, column, step)) {
        grid_->SetCurrentCell(static_cast<int>(row), *found);
        grid_->setFocus();
        return;
      }
      const auto next = filter_.NextIncomplete(*data1_, row + step, step);
      if (!next) return context_.user.Beep();
      row = *next;
      column = step > 0 ? 0 : kColumnCount - 1;
    }
  } catch (const dao::EngineError& error) {
    ShowError(error);
  }
}

}  // namespace varnlog::logview
