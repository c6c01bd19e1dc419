#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace varnlog::dao {

/// Where the row ids of a dynaset come from, in its order.
class IdSource {
 public:
  virtual ~IdSource() = default;
  /// Appends up to `rows` further ids, more where stopping would cost as much as going on; true at the end.
  /// No lock outlasts the call.
  virtual bool Fetch(std::size_t rows, std::vector<std::int64_t>& ids) = 0;
};

/// Ids that were computed beforehand.
class ComputedIds final : public IdSource {
 public:
  explicit ComputedIds(std::vector<std::int64_t> ids) : ids_(std::move(ids)) {}
  bool Fetch(std::size_t rows, std::vector<std::int64_t>& ids) override;

 private:
  std::vector<std::int64_t> ids_;
};

}  // namespace varnlog::dao
