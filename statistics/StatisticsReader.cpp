#include "statistics/StatisticsReader.h"

#include <algorithm>
#include <limits>

namespace varnlog::statistics {

using platform::DateTime;

namespace {

enum Column : std::size_t { kTaken, kType, kDose, kRetake, kPerson, kBorn };

const std::vector<std::string>& Fields() {
  static const std::vector<std::string> kFields = {"tXrayTs",         "tXraySType", "tXraySDose",
                                                   "tXraySDiagRetry", "tXraySDr",   "tXrayDBirthday"};
  return kFields;
}

constexpr std::size_t kDateLength = 10;  // of YYYY-MM-DD hh:mm:ss
constexpr std::size_t kStampLength = 19;
constexpr std::size_t kHourAt = 11;
constexpr std::size_t kMostLatest = 4'000;
constexpr int kDaysAWeek = 7;
constexpr std::int64_t kSecondsADay = 86'400;

/// The zero of the stored dates, 30 December 1899, was a Saturday.
std::size_t WeekdayOf(DateTime date) {
  constexpr std::int64_t kSaturday = 5;
  const std::int64_t days = date.SecondsSinceEpoch() / kSecondsADay + kSaturday;
  return static_cast<std::size_t>((days % kDaysAWeek + kDaysAWeek) % kDaysAWeek);
}

template <typename Map>
typename Map::mapped_type& At(Map& map, std::string_view key) {
  const auto found = map.find(key);
  return found != map.end() ? found->second : map[std::string(key)];
}

template <typename Latest>
void KeepNewest(Latest& latest) {
  std::ranges::sort(latest, [](const auto& a, const auto& b) { return a.first > b.first; });
  if (latest.size() > kLatest) latest.resize(kLatest);
}

}  // namespace

StatisticsReader::StatisticsReader(dao::Database& log, std::span<const std::int64_t> exposures,
                                   DateTime today)
    : scan_(log, Fields(), exposures), retention_(today) {}

bool StatisticsReader::Read(std::int64_t rows) {
  return scan_.Read(rows, [this](const logview::ExposureScan::Row& row) { AddRow(row); });
}

Part* StatisticsReader::AddTime(std::string_view taken) {
  if (taken.size() != kStampLength) return nullptr;
  const std::string_view date = taken.substr(0, kDateLength);
  if (date != day_.date) {
    const auto read = DateTime::FromIso(date);
    if (!read) return nullptr;
    day_ = {std::string(date), &read_.months[{read->Year(), read->Month()}], WeekdayOf(*read)};
  }
  const int hour = (taken[kHourAt] - '0') * 10 + (taken[kHourAt + 1] - '0');
  if (hour < 0 || hour >= static_cast<int>(read_.hours.size())) return nullptr;
  ++read_.hours[static_cast<std::size_t>(hour)];
  ++read_.weekdays[day_.weekday];
  return day_.month;
}

void StatisticsReader::AddDose(std::string_view type, std::string_view taken, std::string_view dose) {
  const auto value = At(read_.types, type).doses.Add(dose);
  if (!value) return;
  auto& latest = At(latest_, type);
  latest.emplace_back(taken, *value);
  if (latest.size() >= kMostLatest) KeepNewest(latest);
}

void StatisticsReader::AddRow(const logview::ExposureScan::Row& row) {
  const std::string_view retake = row[kRetake].text;
  read_.all.Add(retake);
  At(read_.persons, row[kPerson].text).Add(retake);
  if (Part* month = AddTime(row[kTaken].text)) {
    month->counted.Add(retake);
    ++At(month->byType, row[kType].text);
  } else {
    ++read_.undated;
  }
  AddDose(row[kType].text, row[kTaken].text, row[kDose].text);
  if (retention_.IsOver(row[kTaken].text, row[kBorn].text)) ++read_.pastRetention;
}

Statistics StatisticsReader::Take() {
  for (auto& [type, latest] : latest_) {
    KeepNewest(latest);
    for (const auto& [taken, value] : latest) read_.types[type].latest.push_back(value);
  }
  return std::move(read_);
}

Statistics ReadStatistics(dao::Database& log, std::span<const std::int64_t> exposures, DateTime today) {
  StatisticsReader reader(log, exposures, today);
  while (!reader.Read(std::numeric_limits<std::int32_t>::max())) {
  }
  return reader.Take();
}

}  // namespace varnlog::statistics
