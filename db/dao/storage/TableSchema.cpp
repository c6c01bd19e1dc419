#include "db/dao/storage/TableSchema.h"

#include <algorithm>

#include "platform/Ascii.h"

namespace varnlog::dao {

std::string LowerName(std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(), platform::ascii::Lower);
  return lower;
}

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return platform::ascii::Lower(x) == platform::ascii::Lower(y); });
}

std::optional<std::size_t> TableSchema::FieldAt(std::string_view fieldName) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const FieldDef& field) { return SameName(field.name, fieldName); });
  if (found == fields.end()) return std::nullopt;
  return static_cast<std::size_t>(found - fields.begin());
}

bool TableSchema::HasIndexOn(std::size_t field) const {
  return std::any_of(firstStoredFields.begin(), firstStoredFields.end(),
                     [&](const std::string& first) { return SameName(first, fields[field].name); });
}

}  // namespace varnlog::dao
