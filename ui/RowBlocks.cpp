#include "ui/RowBlocks.h"

#include <algorithm>
#include <exception>
#include <iterator>

namespace varnlog::ui {

void RowBlocks::SetColumnCount(int columns) {
  columns_ = columns;
  Clear();
}

RowBlocks::Row RowBlocks::At(std::int64_t row) {
  if (events_ == nullptr || row < 0 || columns_ == 0) return {};
  const std::int64_t first = row - row % kRowsPerBlock;
  Block* block = Find(first);
  if (block == nullptr) {
    // A handler that lets events through would be asked again for what it is just reading.
    if (reading_) return {};
    blocks_.push_front(Read(first));
    if (blocks_.size() > kBlocksKept) blocks_.pop_back();
    block = &blocks_.front();
  }
  const int index = static_cast<int>(row - first);
  if (index >= block->rows.RowCount()) return {};
  return {&block->rows, index};
}

void RowBlocks::Forget(std::int64_t row) {
  blocks_.remove_if(
      [row](const Block& block) { return row >= block.first && row < block.first + kRowsPerBlock; });
}

void RowBlocks::ForgetFrom(std::int64_t row) {
  blocks_.remove_if([row](const Block& block) { return row < block.first + kRowsPerBlock; });
}

RowBlocks::Block* RowBlocks::Find(std::int64_t first) {
  const auto found = std::find_if(blocks_.begin(), blocks_.end(),
                                  [first](const Block& block) { return block.first == first; });
  if (found == blocks_.end()) return nullptr;
  if (found->failedAt && !reading_ && std::chrono::steady_clock::now() - *found->failedAt > kRetryAfter) {
    blocks_.erase(found);
    return nullptr;
  }
  if (found != blocks_.begin()) blocks_.splice(blocks_.begin(), blocks_, found);
  return &blocks_.front();
}

RowBlocks::Block RowBlocks::Read(std::int64_t first) {
  Block block{first, RowBuffer(kRowsPerBlock, columns_), std::nullopt};
  reading_ = true;
  const std::optional<DataFailure> failure = Fill(block);
  reading_ = false;
  ++readCount_;
  if (failure) {
    block.rows.SetRowCount(0);
    block.failedAt = std::chrono::steady_clock::now();
    onFailure_(*failure);
  }
  return block;
}

std::optional<DataFailure> RowBlocks::Fill(Block& block) {
  try {
    std::optional<std::int64_t> position;
    // Counted from before the first row, so that any row is reached without knowing a neighbour's bookmark.
    auto failure = events_->UnboundReadDataEx(block.rows, std::nullopt, block.first + 1, position);
    if (!failure && position && *position != block.first) block.rows.SetRowCount(0);
    return failure;
  } catch (const std::exception& e) {
    return DataFailure{0, QString::fromUtf8(e.what())};
  }
}

}  // namespace varnlog::ui
