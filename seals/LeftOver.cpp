#include "seals/LeftOver.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "db/dao/TableScan.h"
#include "platform/Author.h"
#include "seals/Canonical.h"
#include "seals/SealTables.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

namespace {

using Place = std::pair<std::int64_t, std::size_t>;  // exposure, field of the flag

/// Seals that hold entries nobody has locked since, as far as seals tell.
struct OpenSeals {
  std::set<std::int64_t> numbers;
  std::int64_t firstHistory = std::numeric_limits<std::int64_t>::max();

  void Add(const OpenSeals& other) {
    numbers.insert(other.numbers.begin(), other.numbers.end());
    firstHistory = std::min(firstHistory, other.firstHistory);
  }
};

/// Of the runs on this workstation that are over. A run that closes the log locks what it has entered.
OpenSeals SealsOfEndedRuns(dao::Database& log, const platform::Author& author) {
  const std::vector<std::string> fields = {"tSealCulNrPk", "tSealSKind", "tSealSPlace", "tSealSRun",
                                           "tSealNFirstHist"};
  std::map<std::string, OpenSeals, std::less<>> runs;
  const auto scan = log.Scan(kSeals, fields, {.first = 1});
  while (scan->Next()) {
    const auto& seal = scan->Values();
    if (seal[2].text != author.workstation || seal[3].text == author.run) continue;
    if (seal[1].text == NameOf(SealKind::kLock)) runs.erase(std::string(seal[3].text));
    if (seal[1].text != NameOf(SealKind::kEntry)) continue;
    runs[std::string(seal[3].text)].Add({{NumberOf(seal[0])}, NumberOf(seal[4])});
  }
  OpenSeals found;
  for (const auto& [run, seals] : runs)
    if (!platform::IsRunning(run)) found.Add(seals);
  return found;
}

/// The flags of values whose last change is an entry of these seals.
std::set<Place> EnteredValues(dao::Database& log, const OpenSeals& seals) {
  const std::vector<std::string> fields = {"tXrayCulIntIDPk", "tHistSField", "tHistNSeal"};
  std::set<Place> places;
  const auto scan = log.Scan(kHistory, fields, {.first = seals.firstHistory});
  while (scan->Next()) {
    const auto& change = scan->Values();
    const auto field = SealedFieldAt(change[1].text);
    if (!field) continue;
    const bool isValue = RuleOf(*field) == FieldRule::kValue;
    const Place place(NumberOf(change[0]), isValue ? FlagOf(*field) : *field);
    if (isValue && seals.numbers.contains(NumberOf(change[2]))) {
      places.insert(place);
    } else {
      places.erase(place);
    }
  }
  return places;
}

bool Lock(dao::Recordset& rows, const Place& place) {
  rows.Seek("=", {place.first});
  if (rows.NoMatch() || !rows.Fields(SealedFields().at(place.second)).Boolean()) return false;
  rows.Edit();
  rows.Fields(SealedFields().at(place.second)).SetBoolean(false);
  rows.Update();
  return true;
}

}  // namespace

std::int64_t LockLeftOver(dao::Database& log, const platform::Author& author) {
  const OpenSeals seals = SealsOfEndedRuns(log, author);
  if (seals.numbers.empty()) return 0;
  const auto places = EnteredValues(log, seals);
  if (places.empty()) return 0;
  dao::ChangeGroup changes = log.BeginChanges();
  const auto rows = log.OpenRecordset(kExposures, dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  std::int64_t locked = 0;
  for (const Place& place : places) locked += Lock(*rows, place) ? 1 : 0;
  changes.Commit();
  return locked;
}

}  // namespace varnlog::seals
