#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace varnlog::dao {

/// Row numbers without a gap, both ends included.
struct IdRange {
  std::int64_t first = 0;
  std::int64_t last = 0;
  friend bool operator==(const IdRange&, const IdRange&) = default;
};

/// How many numbers the ranges hold.
[[nodiscard]] std::int64_t CountOf(const std::vector<IdRange>& ranges);
/// "3, 17-20, 400", cut with "..." where it would be longer than `most` characters.
[[nodiscard]] std::string RangesText(const std::vector<IdRange>& ranges, std::size_t most);

/// What a repair found and what it made of it.
struct RepairReport {
  struct Table {
    std::string name;
    /// Rows that could be read.
    std::int64_t read = 0;
    /// Numbers that no row has although the table's counter gave them out, one after the other.
    std::vector<IdRange> missing;
  };

  /// What was damaged; empty when the file was sound and stayed as it was.
  std::vector<std::string> findings;
  /// Empty for a sound file.
  std::vector<Table> tables;
  /// Where the file stays as it was before; "" for a sound one.
  std::string damagedFile;

  [[nodiscard]] bool WasDamaged() const { return !findings.empty(); }
};

}  // namespace varnlog::dao
