#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/rows/ValueDictionary.h"
#include "db/dao/sqlite/rows/RowCollector.h"

namespace varnlog::dao {

/// A row's values as texts; nothing for NULL.
using RowTexts = std::vector<std::optional<std::string_view>>;

/// Collects the different rows of a scan. Numbers are taken in their text form, so rows in which a number and
/// a text look alike are the same.
class DifferentRows final : public RowCollector {
 public:
  /// Stops collecting, but not the scan, beyond `most` different rows.
  explicit DifferentRows(std::size_t most) : most_(most) {}

  void Take(int count, sqlite3_value** values) override;
  /// To be called after the scan.
  void Finish() { TakePending(); }

  [[nodiscard]] bool TooMany() const { return rows_.Size() > most_; }
  [[nodiscard]] std::size_t Count() const { return rows_.Size(); }
  /// The texts point into this object.
  void Get(std::size_t row, RowTexts& texts) const;

 private:
  void Append(int count, sqlite3_value** values);
  void TakePending();

  std::size_t most_;
  ValueDictionary rows_;
  struct Pending {
    std::size_t end;
    std::uint32_t hash;
  };
  // Rows that are on their way into the dictionary, each as the lengths of its values followed by their
  // bytes.
  std::vector<char> bytes_;
  std::size_t size_ = 0;
  std::vector<Pending> pending_;
  std::size_t columns_ = 0;
};

}  // namespace varnlog::dao
