#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace varnlog::dao {

/// Rows of a table by their number. A bit for each number where they lie close together, as they do in a log.
class IdSet {
 public:
  IdSet() = default;
  explicit IdSet(std::vector<std::int64_t> ids);

  [[nodiscard]] bool Contains(std::int64_t id) const;
  void Set(std::int64_t id, bool contained);
  /// The least number from `id` on; nothing when there is none.
  [[nodiscard]] std::optional<std::int64_t> From(std::int64_t id) const;
  [[nodiscard]] std::int64_t Count() const { return count_; }

 private:
  std::int64_t first_ = 0;
  std::vector<bool> bits_;            // from `first_` on; empty when the numbers are far apart
  std::vector<std::int64_t> sorted_;  // then these
  std::int64_t count_ = 0;
};

}  // namespace varnlog::dao
