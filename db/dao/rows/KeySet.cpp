#include "db/dao/rows/KeySet.h"

#include <algorithm>
#include <utility>

namespace varnlog::dao {

namespace {

constexpr std::int64_t kBlockRows = 64;
constexpr std::size_t kKeptBlocks = 3;
constexpr std::size_t kUsualRowBytes = 128;
constexpr std::int64_t kLargestGap = 4;

}  // namespace

KeySet::KeySet(std::shared_ptr<Connection> connection, std::shared_ptr<Select> select,
               std::unique_ptr<IdSource> source)
    : connection_(std::move(connection)), select_(std::move(select)), source_(std::move(source)) {}

bool KeySet::Fetch(std::size_t rows) {
  if (!isComplete_) isComplete_ = source_->Fetch(rows, ids_);
  return isComplete_;
}

// Before the end is known the new row turns up by itself.
void KeySet::Append(std::int64_t id) {
  if (isComplete_) ids_.push_back(id);
}

bool KeySet::Block::Holds(std::int64_t position) const {
  return position >= first && position < first + static_cast<std::int64_t>(rows->RowCount());
}

KeySet::Row KeySet::At(std::int64_t position, bool backward) {
  const Connection::Stamp now = connection_->RecentStamp();
  std::erase_if(blocks_, [&](const Block& block) { return block.Holds(position) && block.stamp != now; });
  auto block =
      std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& each) { return each.Holds(position); });
  if (block == blocks_.end()) {
    const std::int64_t first = backward ? std::max<std::int64_t>(0, position - kBlockRows + 1) : position;
    Load(first, std::min(kBlockRows, Count() - first));
    block = blocks_.begin();
  }
  return {block->rows, static_cast<std::size_t>(position - block->first)};
}

Statement& KeySet::RowStatement(const char* condition) {
  return select_->Prepared(*connection_, "SELECT " + select_->ColumnList() + ", rowid FROM " +
                                             QuoteIdentifier(select_->table->name) + " WHERE rowid " +
                                             condition);
}

// True when the ids run up or down without large gaps, as they do in the order in which rows were added.
bool KeySet::IsDense(std::int64_t first, std::int64_t count) const {
  const std::int64_t step = count > 1 && IdAt(first + 1) < IdAt(first) ? -1 : 1;
  for (std::int64_t position = first; position + 1 < first + count; ++position) {
    const std::int64_t gap = (IdAt(position + 1) - IdAt(position)) * step;
    if (gap < 1 || gap > kLargestGap) return false;
  }
  return true;
}

void KeySet::ReadRange(std::int64_t first, std::int64_t count, RowSet& rows) {
  const std::int64_t last = first + count - 1;
  const bool isDescending = IdAt(last) < IdAt(first);
  Statement& read = RowStatement(isDescending ? "BETWEEN ?2 AND ?1 ORDER BY rowid DESC"
                                              : "BETWEEN ?1 AND ?2 ORDER BY rowid");
  ResetAtEnd reset(read);
  read.Bind(1, IdAt(first));
  read.Bind(2, IdAt(last));
  const int idColumn = static_cast<int>(select_->columns.size());
  std::int64_t position = first;
  const auto isBefore = [&](std::int64_t a, std::int64_t b) { return isDescending ? a > b : a < b; };
  while (position <= last && read.Step()) {
    const std::int64_t id = read.Number(idColumn);
    for (; position <= last && isBefore(IdAt(position), id); ++position) rows.AppendDeleted();
    if (position > last || IdAt(position) != id) continue;  // a row that is not in the record set
    rows.Append(read);
    ++position;
  }
  for (; position <= last; ++position) rows.AppendDeleted();
}

void KeySet::ReadSingly(std::int64_t first, std::int64_t count, RowSet& rows) {
  Statement& read = RowStatement("= ?1");
  ResetAtEnd reset(read);
  for (std::int64_t position = first; position < first + count; ++position) {
    read.Reset();
    read.Bind(1, IdAt(position));
    if (read.Step())
      rows.Append(read);
    else
      rows.AppendDeleted();
  }
}

void KeySet::Load(std::int64_t first, std::int64_t count) {
  auto rows = std::make_shared<RowSet>(select_->columns.size());
  rows->Reserve(static_cast<std::size_t>(count), kUsualRowBytes);
  ReadScope scope(*connection_);
  if (IsDense(first, count))
    ReadRange(first, count, *rows);
  else
    ReadSingly(first, count, *rows);
  // Inside the read, so that nothing can have changed between the rows and their stamp.
  blocks_.push_front({first, std::move(rows), connection_->CurrentStamp(), connection_->OthersVersion()});
  if (blocks_.size() > kKeptBlocks) blocks_.pop_back();
}

KeySet::Row KeySet::SeenBeforeOthersChanged(std::int64_t position) {
  const auto block =
      std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& each) { return each.Holds(position); });
  if (block == blocks_.end() || block->othersVersion == connection_->OthersVersion()) return {};
  return {block->rows, static_cast<std::size_t>(position - block->first)};
}

void KeySet::Forget(std::int64_t position) {
  std::erase_if(blocks_, [&](const Block& block) { return block.Holds(position); });
}

}  // namespace varnlog::dao
