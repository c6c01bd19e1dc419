#include "ui/RowBlocks.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace varnlog::ui {

void RowBlocks::SetColumnCount(int columns) {
  columns_ = columns;
  Clear();
}

RowBlocks::Row RowBlocks::At(std::int64_t row) {
  if (events_ == nullptr || row < 0 || columns_ == 0) return {};
  const std::int64_t first = row - row % kRowsPerBlock;
  auto block = Find(first);
  // A handler that lets events through would be asked again for what it is just reading.
  if (!reading_ && (block == blocks_.end() || block->IsDue())) {
    Read(first);
    block = Find(first);
  }
  if (block == blocks_.end()) return {};
  blocks_.splice(blocks_.begin(), blocks_, block);
  const int index = static_cast<int>(row - first);
  if (index >= block->rows.RowCount()) return {};
  return {&block->rows, index};
}

void RowBlocks::Renew() {
  for (Block& block : blocks_) block.Renew();
}

void RowBlocks::Renew(std::int64_t row) {
  if (const auto block = Find(row - row % kRowsPerBlock); block != blocks_.end()) block->Renew();
}

void RowBlocks::ForgetFrom(std::int64_t row) {
  blocks_.remove_if([row](const Block& block) { return row < block.first + kRowsPerBlock; });
}

void RowBlocks::Block::Renew() {
  isOld = true;
  failedAt.reset();
}

bool RowBlocks::Block::IsDue() const {
  return failedAt ? std::chrono::steady_clock::now() - *failedAt > kRetryAfter : isOld;
}

std::list<RowBlocks::Block>::iterator RowBlocks::Find(std::int64_t first) {
  return std::ranges::find(blocks_, first, &Block::first);
}

void RowBlocks::Read(std::int64_t first) {
  Block block{.first = first, .rows = RowBuffer(kRowsPerBlock, columns_), .failedAt = {}};
  reading_ = true;
  const std::optional<DataFailure> failure = Fill(block);
  reading_ = false;
  ++readCount_;
  const auto before = Find(first);
  const bool stays = failure && failure->keepsRows && before != blocks_.end();
  if (failure) {
    block.rows.SetRowCount(0);
    (stays ? *before : block).failedAt = std::chrono::steady_clock::now();
  }
  if (!stays) {
    if (before != blocks_.end()) blocks_.erase(before);
    blocks_.push_front(std::move(block));
    if (blocks_.size() > kBlocksKept) blocks_.pop_back();
  }
  if (failure) onFailure_(*failure);
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
