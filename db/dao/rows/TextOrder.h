#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "db/dao/rows/ValueDictionary.h"

namespace varnlog::dao {

/// Puts rows in the order of text fields faster than the storage's ORDER BY: each different value is compared
/// once, and the rows are counted into their places.
///
/// The order is the storage's own: NULL before every value (after it when descending), texts by the collation
/// or, dates in their stored form, by bytes. Rows that are equal in all terms are in the order of their ids,
/// descending when the last term is: so turning all terms round gives the same rows backwards, and the
/// reverse of a sorted result costs no more than walking it from the other end.
class TextOrder {
 public:
  struct Term {
    bool collated = true;  // a text field; false for a date
    bool descending = false;
  };

  /// `expectedRows` saves growing; it may be wrong.
  explicit TextOrder(const std::vector<Term>& terms, std::size_t expectedRows = 0);

  /// One row with a value for each term, nothing for NULL. The texts are copied when they are new. False when
  /// the fields have so many different values that the dictionaries would not stay small: the storage should
  /// sort them then, and this object is of no further use.
  [[nodiscard]] bool Add(std::int64_t id, std::span<const std::optional<std::string_view>> values);

  /// The ids in order. Takes what was added; call it once.
  [[nodiscard]] std::vector<std::int64_t> Finish();

 private:
  static constexpr std::uint32_t kNull = 0xFFFFFFFF;

  struct Column {
    Term term;
    ValueDictionary values;
    std::vector<std::uint32_t> codes;  // one a row
  };

  [[nodiscard]] bool StaysSmall() const;
  [[nodiscard]] std::vector<std::uint32_t> RowsById() const;
  static std::vector<std::uint32_t> CountIntoPlace(const Column& column,
                                                   const std::vector<std::uint32_t>& rows);

  std::vector<Column> columns_;
  std::vector<std::int64_t> ids_;
  bool ascendingIds_ = true;
};

}  // namespace varnlog::dao
