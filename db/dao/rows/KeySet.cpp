#include "db/dao/rows/KeySet.h"

#include <algorithm>
#include <span>
#include <utility>

namespace varnlog::dao {

namespace {

constexpr std::int64_t kBlockRows = 64;
constexpr std::size_t kKeptBlocks = 3;

}  // namespace

KeySet::KeySet(std::shared_ptr<RowStore> store, std::unique_ptr<IdSource> source)
    : store_(std::move(store)), source_(std::move(source)) {}

bool KeySet::Fetch(std::size_t rows) {
  if (!isComplete_) isComplete_ = source_->Fetch(rows, ids_);
  return isComplete_;
}

// Before the end is known the new row turns up by itself.
void KeySet::Append(std::int64_t id) {
  if (isComplete_) ids_.push_back(id);
}

bool KeySet::Block::Holds(std::int64_t position) const {
  return position >= first && position < first + static_cast<std::int64_t>(read.rows->RowCount());
}

RowView KeySet::At(std::int64_t position, bool backward) {
  const RowStamp now = store_->RecentStamp();
  std::erase_if(blocks_,
                [&](const Block& block) { return block.Holds(position) && block.read.state.stamp != now; });
  auto block =
      std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& each) { return each.Holds(position); });
  if (block == blocks_.end()) {
    const std::int64_t first = backward ? std::max<std::int64_t>(0, position - kBlockRows + 1) : position;
    Load(first, std::min(kBlockRows, Count() - first));
    block = blocks_.begin();
  }
  return {block->read.rows, static_cast<std::size_t>(position - block->first)};
}

void KeySet::Load(std::int64_t first, std::int64_t count) {
  const auto wanted =
      std::span(ids_).subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count));
  blocks_.push_front({first, store_->Read(wanted)});
  if (blocks_.size() > kKeptBlocks) blocks_.pop_back();
}

RowView KeySet::SeenBeforeOthersChanged(std::int64_t position) {
  const auto block =
      std::find_if(blocks_.begin(), blocks_.end(), [&](const Block& each) { return each.Holds(position); });
  if (block == blocks_.end() || block->read.state.othersVersion == store_->OthersVersion()) return {};
  return {block->read.rows, static_cast<std::size_t>(position - block->first)};
}

void KeySet::Forget(std::int64_t position) {
  std::erase_if(blocks_, [&](const Block& block) { return block.Holds(position); });
}

}  // namespace varnlog::dao
