#include "db/dao/TableDef.h"

#include <algorithm>
#include <utility>

#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

namespace {

template <typename Item>
const Item& Named(const std::vector<Item>& items, std::string_view name) {
  const auto found =
      std::find_if(items.begin(), items.end(), [&](const Item& item) { return SameName(item.name, name); });
  if (found == items.end())
    throw EngineError(ErrorNumber::kItemNotFound, "There is no item '" + std::string(name) + "'.");
  return *found;
}

}  // namespace

TableDef::TableDef(std::shared_ptr<Storage> storage, std::string name, std::vector<FieldDef> fields,
                   std::vector<Index> indexes)
    : storage_(std::move(storage)),
      name_(std::move(name)),
      fields_(std::move(fields)),
      indexes_(std::move(indexes)) {}

const FieldDef& TableDef::FieldNamed(std::string_view name) const {
  return Named(fields_, name);
}
const Index& TableDef::IndexNamed(std::string_view name) const {
  return Named(indexes_, name);
}

void TableDef::Append(const FieldDef& field) {
  if (field.isCounter || field.name.empty() || (field.type == FieldType::kText && field.size <= 0))
    throw EngineError(ErrorNumber::kNotSupported, "Such a field cannot be added to a table.");
  storage_->AppendField(name_, field);
  fields_.push_back(field);
}

void TableDef::Append(const Index& index) {
  storage_->AppendIndex(name_, index);
  indexes_.push_back(index);
}

}  // namespace varnlog::dao
