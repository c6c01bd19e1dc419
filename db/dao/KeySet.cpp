#include "db/dao/KeySet.h"

#include <algorithm>
#include <utility>

namespace varnlog::dao {

namespace {

constexpr std::int64_t kBlockRows = 64;
constexpr std::size_t kKeptBlocks = 3;

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
  const Connection::Stamp now = connection_->CurrentStamp();
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

Statement& KeySet::RowStatement() {
  return select_->Prepared(*connection_, "SELECT " + select_->ColumnList() + " FROM " +
                                             QuoteIdentifier(select_->table->name) + " WHERE rowid = ?1");
}

const KeySet::Block& KeySet::Load(std::int64_t first, std::int64_t count) {
  auto rows = std::make_shared<RowSet>(select_->columns.size());
  rows->Reserve(static_cast<std::size_t>(count));
  ReadScope scope(*connection_);
  Statement& read = RowStatement();
  ResetAtEnd reset(read);
  for (std::int64_t position = first; position < first + count; ++position) {
    read.Reset();
    read.Bind(1, IdAt(position));
    if (read.Step())
      rows->Append(read);
    else
      rows->AppendDeleted();
  }
  // Inside the read, so that nothing can have changed between the rows and their stamp.
  blocks_.push_front({first, std::move(rows), connection_->CurrentStamp(), connection_->OthersVersion()});
  if (blocks_.size() > kKeptBlocks) blocks_.pop_back();
  return blocks_.front();
}

KeySet::Row KeySet::SeenBeforeOthersChanged(std::int64_t position) {
  const auto block =
      std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& each) { return each.Holds(position); });
  if (block == blocks_.end() || block->othersVersion == connection_->OthersVersion()) return {};
  return {block->rows, static_cast<std::size_t>(position - block->first)};
}

}  // namespace varnlog::dao
