#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "db/dao/rows/RowStore.h"

namespace varnlog::dao {

/// The identity of a dynaset's rows, shared with its clones, and the few blocks of rows last looked at.
class KeySet {
 public:
  KeySet(std::shared_ptr<RowStore> store, std::unique_ptr<IdSource> source);

  /// True when all ids are known.
  bool Fetch(std::size_t rows);
  [[nodiscard]] std::int64_t Count() const { return static_cast<std::int64_t>(ids_.size()); }
  [[nodiscard]] bool IsComplete() const { return isComplete_; }
  [[nodiscard]] std::int64_t IdAt(std::int64_t position) const {
    return ids_[static_cast<std::size_t>(position)];
  }
  [[nodiscard]] const std::vector<std::int64_t>& Ids() const { return ids_; }
  /// A row that was added through the record set.
  void Append(std::int64_t id);

  /// The row as it is stored now. Others around it are read with it, those before it when the reader moves
  /// backward.
  [[nodiscard]] RowView At(std::int64_t position, bool backward);
  /// The row as it was last read, if another user has made a change since; else nothing.
  [[nodiscard]] RowView SeenBeforeOthersChanged(std::int64_t position);
  /// The row was changed by the user who sees it.
  void Forget(std::int64_t position);

 private:
  struct Block {
    std::int64_t first = 0;
    RowStore::Block read;
    [[nodiscard]] bool Holds(std::int64_t position) const;
  };

  void Load(std::int64_t first, std::int64_t count);

  std::shared_ptr<RowStore> store_;
  std::unique_ptr<IdSource> source_;
  std::vector<std::int64_t> ids_;
  bool isComplete_ = false;
  std::list<Block> blocks_;  // the latest first
};

}  // namespace varnlog::dao
