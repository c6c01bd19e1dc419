#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "db/dao/Field.h"

namespace varnlog::seals {

inline constexpr const char* kExposures = "TXray";
inline constexpr const char* kHistory = "THistory";
inline constexpr const char* kSeals = "TSeal";

/// The fields of an exposure in the order in which they are sealed, the number first. A log that was brought
/// up to date keeps them in another order in its table.
inline constexpr std::size_t kFieldCount = 25;
[[nodiscard]] const std::array<std::string, kFieldCount>& SealedFields();
/// In the table, or nothing for another name.
[[nodiscard]] std::optional<std::size_t> SealedFieldAt(std::string_view name);

/// Where each sealed field stands among `fields`; throws dao::EngineError when one is missing.
[[nodiscard]] std::array<std::size_t, kFieldCount> PlacesOfSealedFields(
    std::span<const dao::FieldDef> fields);

/// What may happen to a field once its exposure is in the log.
enum class FieldRule {
  kNever,    // number, birth date, sex, time
  kSuite,    // the names: the imaging suite may deliver their letter case anew
  kValue,    // open to the user as long as its flag is true
  kFlag,     // goes to false for everybody, to true for the imaging suite and for a repair
  kComment,  // always open
};
[[nodiscard]] FieldRule RuleOf(std::size_t field);
/// The flag of a kValue field.
[[nodiscard]] std::size_t FlagOf(std::size_t field);

}  // namespace varnlog::seals
