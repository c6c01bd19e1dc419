#include "seals/History.h"

#include <algorithm>
#include <map>

#include "db/dao/TableScan.h"
#include "seals/Canonical.h"
#include "seals/SealTables.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

namespace {

const std::vector<std::string>& OriginFields() {
  static const std::vector<std::string> kFields = {"tSealCulNrPk", "tSealSKind",    "tSealDTime",
                                                   "tSealNOffset", "tSealSAccount", "tSealSFullName",
                                                   "tSealSPlace",  "tSealSProgram", "tSealNFirstRow"};
  return kFields;
}

Origin ToOrigin(const std::vector<dao::CellView>& seal) {
  Origin origin;
  origin.seal = NumberOf(seal[0]);
  origin.kind = TextOf(seal[1]);
  origin.time = platform::DateTime::FromIso(seal[2].text).value_or(platform::DateTime());
  origin.offsetMinutes = static_cast<int>(NumberOf(seal[3]));
  origin.account = TextOf(seal[4]);
  origin.fullName = TextOf(seal[5]);
  origin.place = TextOf(seal[6]);
  origin.program = TextOf(seal[7]);
  return origin;
}

Origin ReadOrigin(dao::Database& log, std::int64_t seal) {
  const auto scan = log.Scan(kSeals, OriginFields(), {.first = seal, .last = seal});
  if (scan->Next()) return ToOrigin(scan->Values());
  Origin unknown;
  unknown.seal = seal;
  return unknown;
}

// The first range that ends behind the number is the exposure's own, unless its seal was lost: then a repair
// has sealed it among all that was left.
std::optional<Origin> ReadRowOrigin(dao::Database& log, std::int64_t exposure) {
  const auto scan = log.Scan(kSeals, OriginFields(), {.order = "tSealNLastRow", .first = exposure});
  while (scan->Next())
    if (NumberOf(scan->Values().back()) <= exposure) return ToOrigin(scan->Values());
  return std::nullopt;
}

std::optional<std::string> Optional(const dao::CellView& value) {
  if (value.kind == dao::CellKind::kNull) return std::nullopt;
  return TextOf(value);
}

}  // namespace

platform::DateTime Origin::LocalTime() const {
  constexpr std::int64_t kSecondsAMinute = 60;
  if (!time.IsSet()) return time;
  return platform::DateTime::FromSeconds(time.SecondsSinceEpoch() + offsetMinutes * kSecondsAMinute);
}

bool IsOfValue(std::string_view field) {
  const auto known = SealedFieldAt(field);
  return known && RuleOf(*known) != FieldRule::kFlag;
}

namespace {

void AddChangedValues(dao::Database& log, std::int64_t first, std::int64_t last,
                      std::vector<ChangedValue>& changed) {
  const std::vector<std::string> fields = {"tXrayCulIntIDPk", "tHistSField"};
  const auto scan = log.Scan(kHistory, fields, {.order = "tXrayCulIntIDPk", .first = first, .last = last});
  while (scan->Next()) {
    const auto& row = scan->Values();
    if (IsOfValue(row[1].text)) changed.push_back({NumberOf(row[0]), TextOf(row[1])});
  }
}

}  // namespace

// Neighbours in the order of time have neighbouring numbers: one walk over all that lies between them costs
// less than one for each, unless they lie far apart.
std::vector<ChangedValue> ReadChangedValues(dao::Database& log, std::span<const std::int64_t> exposures) {
  constexpr std::int64_t kNear = 256;
  std::vector<ChangedValue> changed;
  if (exposures.empty() || !HasSealTables(log)) return changed;
  const auto [first, last] = std::minmax_element(exposures.begin(), exposures.end());
  if (*last - *first < kNear) {
    AddChangedValues(log, *first, *last, changed);
  } else {
    for (const std::int64_t exposure : exposures) AddChangedValues(log, exposure, exposure, changed);
  }
  return changed;
}

std::vector<std::int64_t> ReadChangedExposures(dao::Database& log) {
  std::vector<std::int64_t> exposures;
  if (!HasSealTables(log)) return exposures;
  const std::vector<std::string> fields = {"tXrayCulIntIDPk", "tHistSField"};
  const auto scan = log.Scan(kHistory, fields, {.order = "tXrayCulIntIDPk"});
  while (scan->Next()) {
    const std::int64_t exposure = NumberOf(scan->Values()[0]);
    const bool isNew = exposures.empty() || exposures.back() != exposure;
    if (isNew && IsOfValue(scan->Values()[1].text)) exposures.push_back(exposure);
  }
  return exposures;
}

std::int64_t LastEntry(dao::Database& log) {
  return HasSealTables(log) ? log.Greatest(kHistory, "tHistCulNrPk") : 0;
}

std::vector<HistoryEntry> ReadHistory(dao::Database& log, std::int64_t exposure) {
  std::vector<HistoryEntry> entries;
  if (!HasSealTables(log)) return entries;
  if (auto origin = ReadRowOrigin(log, exposure)) {
    HistoryEntry first;
    first.exposure = exposure;
    first.kind = origin->kind;
    first.origin = *std::move(origin);
    entries.push_back(std::move(first));
  }
  std::map<std::int64_t, Origin> origins;
  const auto scan =
      log.Scan(kHistory, HistoryFields(), {.order = "tXrayCulIntIDPk", .first = exposure, .last = exposure});
  while (scan->Next()) {
    const auto& row = scan->Values();
    const std::int64_t seal = NumberOf(row[6]);
    if (!origins.contains(seal)) origins.emplace(seal, ReadOrigin(log, seal));
    entries.push_back({NumberOf(row[0]), exposure, TextOf(row[2]), Optional(row[3]), Optional(row[4]),
                       TextOf(row[5]), origins[seal]});
  }
  return entries;
}

}  // namespace varnlog::seals
