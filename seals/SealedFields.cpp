#include "seals/SealedFields.h"

#include <algorithm>

#include "core/LogLayout.h"
#include "db/dao/EngineError.h"

namespace varnlog::seals {

// What was sealed once keeps its bytes: a field of a later layout would have to stand behind these.
const std::array<std::string, kFieldCount>& SealedFields() {
  static const std::array<std::string, kFieldCount> kFields = [] {
    std::array<std::string, kFieldCount> names;
    const auto fields = core::ExposureFields();
    for (std::size_t i = 0; i < kFieldCount; ++i) names.at(i) = fields[i].name;
    return names;
  }();
  return kFields;
}

std::optional<std::size_t> SealedFieldAt(std::string_view name) {
  const auto& fields = SealedFields();
  const auto found = std::find(fields.begin(), fields.end(), name);
  if (found == fields.end()) return std::nullopt;
  return static_cast<std::size_t>(found - fields.begin());
}

std::array<std::size_t, kFieldCount> PlacesOfSealedFields(std::span<const dao::FieldDef> fields) {
  std::array<std::size_t, kFieldCount> places{};
  for (std::size_t i = 0; i < kFieldCount; ++i) {
    const std::string& name = SealedFields().at(i);
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const dao::FieldDef& field) { return field.name == name; });
    if (found == fields.end())
      throw dao::EngineError(dao::ErrorNumber::kItemNotFound, "The log has no field '" + name + "'.");
    places.at(i) = static_cast<std::size_t>(found - fields.begin());
  }
  return places;
}

FieldRule RuleOf(std::size_t field) {
  constexpr std::size_t kName = 1;
  constexpr std::size_t kFirstName = 2;
  const std::string& name = SealedFields().at(field);
  if (field == kName || field == kFirstName) return FieldRule::kSuite;
  if (name.starts_with("tXrayBEd")) return FieldRule::kFlag;
  if (field + 1 == kFieldCount) return FieldRule::kComment;
  // A value stands before its flag.
  return SealedFields().at(field + 1).starts_with("tXrayBEd") ? FieldRule::kValue : FieldRule::kNever;
}

std::size_t FlagOf(std::size_t field) {
  return field + 1;
}

}  // namespace varnlog::seals
