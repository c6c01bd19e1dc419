#include "seals/History.h"

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

// Ranges of exposures do not overlap, so the one that ends first behind the number is the only candidate.
std::optional<Origin> ReadRowOrigin(dao::Database& log, std::int64_t exposure) {
  const auto scan = log.Scan(kSeals, OriginFields(), {.order = "tSealNLastRow", .first = exposure});
  if (!scan->Next() || NumberOf(scan->Values().back()) > exposure) return std::nullopt;
  return ToOrigin(scan->Values());
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
