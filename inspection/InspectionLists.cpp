#include "inspection/InspectionLists.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string>

#include "intake/CodeMappings.h"
#include "logview/IncompleteRows.h"
#include "logview/Tally.h"

namespace varnlog::inspection {

namespace {

enum Column : std::size_t { kType, kRetake, kName, kFirstName, kBorn, kNumber };

constexpr std::int64_t kAll = std::numeric_limits<std::int32_t>::max();
constexpr char kDivider = '\x1F';

using Ids = std::vector<std::int64_t>;

Ids Among(std::span<const std::int64_t> exposures, const dao::IdSet& wanted) {
  Ids among;
  std::ranges::copy_if(exposures, std::back_inserter(among),
                       [&wanted](std::int64_t id) { return wanted.Contains(id); });
  return among;
}

dao::IdSet Incomplete(dao::Database& log) {
  logview::IncompleteRows rows(log);
  while (!rows.Read(kAll)) {
  }
  return rows.Find();
}

/// The exposures of each patient of a type.
using Patients = std::map<std::string, Ids>;

Ids ChooseEvenly(const Patients& patients, int wanted) {
  Ids chosen;
  const auto count = static_cast<std::int64_t>(patients.size());
  const std::int64_t number = std::min<std::int64_t>(wanted, count);
  std::int64_t place = 0;
  std::int64_t next = 0;
  for (const auto& [patient, ids] : patients) {
    if (next < number && place == next * count / number) {
      chosen.insert(chosen.end(), ids.begin(), ids.end());
      ++next;
    }
    ++place;
  }
  return chosen;
}

}  // namespace

InspectionLists FindLists(dao::Database& log, std::span<const std::int64_t> exposures, int patients) {
  Ids retakes;
  std::map<std::string, Patients> types;
  logview::ExposureScan scan(
      log, {"tXraySType", "tXraySDiagRetry", "tXraySName", "tXraySFirstname", "tXrayDBirthday"}, exposures);
  const auto take = [&](const logview::ExposureScan::Row& row) {
    const std::int64_t id = row[kNumber].integer;
    const std::string_view retake = row[kRetake].text;
    if (retake == intake::kRepeatCode || retake == intake::kNotDiagnosticCode) retakes.push_back(id);
    std::string patient(row[kName].text);
    patient.append(1, kDivider).append(row[kFirstName].text).append(1, kDivider).append(row[kBorn].text);
    types[std::string(row[kType].text)][patient].push_back(id);
  };
  while (!scan.Read(kAll, take)) {
  }
  Ids sample;
  for (const auto& [type, known] : types) {
    const Ids chosen = ChooseEvenly(known, patients);
    sample.insert(sample.end(), chosen.begin(), chosen.end());
  }
  return {Among(exposures, Incomplete(log)), Among(exposures, dao::IdSet(retakes)),
          Among(exposures, dao::IdSet(sample))};
}

}  // namespace varnlog::inspection
