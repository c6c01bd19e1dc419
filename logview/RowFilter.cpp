#include "logview/RowFilter.h"

#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace varnlog::logview {

void RowFilter::Renew(const std::shared_ptr<dao::Database>& log) {
  const bool same = log == log_;
  log_ = log;
  if (finder_ && !(same && finder_->IsCurrent())) finder_.reset();
  if (incomplete_ && same && incomplete_->IsCurrent()) return;
  incompleteIds_.reset();
  incomplete_ = log_ ? std::make_unique<IncompleteRows>(*log_) : nullptr;
}

void RowFilter::Close() {
  finder_.reset();
  incomplete_.reset();
  incompleteIds_.reset();
  log_.reset();
}

bool RowFilter::Read(std::int64_t rows) {
  if (!log_) return true;
  if (!finder_ && !query_.IsEmpty()) finder_ = std::make_unique<RowFinder>(*log_, scheme_, shortDate_);
  // What somebody is waiting for comes first.
  if (finder_ && !finder_->IsComplete()) {
    (void)finder_->Read(rows);
    return false;
  }
  if (incompleteIds_) return true;
  if (!incomplete_->Read(rows)) return false;
  incompleteIds_ = incomplete_->Find();
  incomplete_->Forget();
  return true;
}

bool RowFilter::IsComplete() const {
  const bool finds = query_.IsEmpty() || (finder_ && finder_->IsComplete());
  return finds && (!onlyIncomplete_ || incompleteIds_);
}

std::unique_ptr<dao::Recordset> RowFilter::Shown(const dao::Recordset& all) {
  const bool finds = !query_.IsEmpty();
  const dao::IdSet found = finds && finder_ ? finder_->Find(query_) : dao::IdSet();
  const dao::IdSet lacking =
      onlyIncomplete_ && !incompleteIds_ && incomplete_ ? incomplete_->Find() : dao::IdSet();
  const dao::IdSet& incomplete = incompleteIds_ ? *incompleteIds_ : lacking;
  std::vector<std::int64_t> shown;
  for (const std::int64_t id : all.Ids()) {
    if (finds && !found.Contains(id)) continue;
    if (onlyIncomplete_ && !incomplete.Contains(id)) continue;
    shown.push_back(id);
  }
  return all.Only(std::move(shown));
}

std::optional<std::int64_t> RowFilter::IncompleteAmong(const dao::Recordset& all) {
  if (!incompleteIds_) return std::nullopt;
  std::int64_t count = 0;
  for (const std::int64_t id : all.Ids()) count += incompleteIds_->Contains(id) ? 1 : 0;
  return count;
}

std::optional<std::int64_t> RowFilter::NextIncomplete(const dao::Recordset& rows, std::int64_t from,
                                                      int step) {
  while (!Read(std::numeric_limits<std::int32_t>::max())) {
  }
  const std::span<const std::int64_t> ids = rows.Ids();
  const auto count = static_cast<std::int64_t>(ids.size());
  for (std::int64_t row = from; incompleteIds_ && row >= 0 && row < count; row += step) {
    if (incompleteIds_->Contains(ids[static_cast<std::size_t>(row)])) return row;
  }
  return std::nullopt;
}

}  // namespace varnlog::logview
