#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/IdSet.h"

namespace varnlog::dao {

struct ValueColumns;

/// One column of a ValueIndex: a text made of a row's fields, kValueDivider between them, NULL as "". Where
/// `openFlags` names yes/no fields, the first as many of `fields` are told only by whether they are open and
/// empty: together they are one number, 1 for the first, 2 for the second, 4 for the third and so on.
struct IndexedColumn {
  std::vector<std::string> fields;
  std::vector<std::string> openFlags = {};
};

inline constexpr char kValueDivider = '\x1F';

/// The different values of some columns of a table and which row has which, so that what searching does with
/// a text is done once for each different one. It is read in slices, the newest rows first, between which the
/// file is free; what others change afterwards is not seen.
class ValueIndex {
 public:
  virtual ~ValueIndex();
  ValueIndex(const ValueIndex&) = delete;
  ValueIndex& operator=(const ValueIndex&) = delete;

  /// Reads about `rows` further rows; true when there are none left. Throws EngineError.
  virtual bool Read(std::int64_t rows) = 0;
  [[nodiscard]] bool IsComplete() const { return complete_; }
  /// Nobody has changed the file since the first slice.
  [[nodiscard]] virtual bool IsCurrent() const = 0;
  /// Gives the memory back; from now on only IsCurrent() and IsComplete() say anything.
  void Forget();

  /// The different values that a column has had so far are numbered from 0.
  [[nodiscard]] std::size_t ValueCount(std::size_t column) const;
  [[nodiscard]] std::string_view Value(std::size_t column, std::size_t number) const;

  /// Marks of values: for each column a mask for each value, in its order.
  using Marks = std::vector<std::vector<std::uint32_t>>;
  /// The rows read so far whose values together carry every bit of `wanted`.
  [[nodiscard]] IdSet RowsWith(const Marks& marks, std::uint32_t wanted) const;

 protected:
  explicit ValueIndex(std::size_t columns);
  [[nodiscard]] ValueColumns& Columns() { return *columns_; }
  void SetComplete() { complete_ = true; }

 private:
  std::unique_ptr<ValueColumns> columns_;
  bool complete_ = false;
};

}  // namespace varnlog::dao
