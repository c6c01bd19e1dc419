#include "db/dao/ValueIndex.h"

#include <utility>

#include "db/dao/rows/ValueColumns.h"

namespace varnlog::dao {

ValueIndex::ValueIndex(std::size_t columns) : columns_(std::make_unique<ValueColumns>(columns)) {}
ValueIndex::~ValueIndex() = default;

void ValueIndex::Forget() {
  columns_ = std::make_unique<ValueColumns>(0);
}

std::size_t ValueIndex::ValueCount(std::size_t column) const {
  return columns_->dictionaries[column].Size();
}

std::string_view ValueIndex::Value(std::size_t column, std::size_t number) const {
  return columns_->dictionaries[column].At(static_cast<std::uint32_t>(number));
}

IdSet ValueIndex::RowsWith(const Marks& marks, std::uint32_t wanted) const {
  std::vector<std::int64_t> found;
  for (std::size_t row = 0; row < columns_->ids.size(); ++row) {
    std::uint32_t carried = 0;
    for (std::size_t i = 0; i < marks.size(); ++i) carried |= marks[i][columns_->codes[i][row]];
    if ((carried & wanted) == wanted) found.push_back(columns_->ids[row]);
  }
  return IdSet(std::move(found));
}

}  // namespace varnlog::dao
