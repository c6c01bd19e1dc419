#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>

#include "ui/RowBuffer.h"
#include "ui/TDBGridEvents.h"

namespace varnlog::ui {

/// The few blocks of rows that the grid remembers. A row is read when it is asked for, together with its
/// block; the block that was not used for longest makes room.
class RowBlocks {
 public:
  /// About a screenful: a jump to any row needs two blocks at most, most of whose rows are shown.
  static constexpr int kRowsPerBlock = 32;
  static constexpr int kBlocksKept = 16;
  /// Rows that could not be read stay blank for so long before they are asked for again.
  static constexpr std::chrono::seconds kRetryAfter{2};

  /// One row of a block; valid until the next call that is not const.
  struct Row {
    const RowBuffer* buffer = nullptr;  // nullptr: the row is not there
    int index = 0;
  };

  using FailureHandler = std::function<void(const DataFailure&)>;
  explicit RowBlocks(FailureHandler onFailure) : onFailure_(std::move(onFailure)) {}

  void SetEvents(TDBGridEvents* events) { events_ = events; }
  /// Also forgets every block.
  void SetColumnCount(int columns);

  Row At(std::int64_t row);
  void Clear() { blocks_.clear(); }
  /// Every row is read anew before it is shown, and shown as it was where DataFailure::keepsRows.
  void Renew();
  /// The same for the block of one row.
  void Renew(std::int64_t row);
  /// Forgets the blocks that hold or follow `row`.
  void ForgetFrom(std::int64_t row);

  /// A handler is filling a block right now.
  [[nodiscard]] bool IsReading() const { return reading_; }
  /// Blocks read so far, for measuring.
  [[nodiscard]] std::int64_t ReadCount() const { return readCount_; }

 private:
  struct Block {
    std::int64_t first;
    RowBuffer rows;
    bool isOld = false;  // to be read anew
    std::optional<std::chrono::steady_clock::time_point> failedAt;

    void Renew();
    [[nodiscard]] bool IsDue() const;
  };
  [[nodiscard]] std::list<Block>::iterator Find(std::int64_t first);
  void Read(std::int64_t first);
  std::optional<DataFailure> Fill(Block& block);

  TDBGridEvents* events_ = nullptr;
  FailureHandler onFailure_;
  std::list<Block> blocks_;  // most recently used first
  int columns_ = 0;
  bool reading_ = false;
  std::int64_t readCount_ = 0;
};

}  // namespace varnlog::ui
