#include "core/LogCheck.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "db/modCommon.h"

namespace varnlog::core {

namespace {

using Findings = std::vector<std::string>;
using dao::IdRange;

constexpr std::string_view kMissingKey = "MissingIds";

std::string Named(std::string_view before, std::string_view name, std::string_view after) {
  return std::string(before).append(name).append(after);
}

std::optional<std::string> VersionOf(dao::Database& log) {
  if (!db::TableExists(log, kConfigTable)) return std::nullopt;
  return ReadLogConfig(log, kVersionKey);
}

void CheckFields(dao::Database& log, std::string_view table, std::span<const LogField> fields,
                 std::string_view version, Findings& findings) {
  const dao::TableDef there = log.TableDefs(table);
  for (const LogField& wanted : fields) {
    if (wanted.since != kFirstVersion && version == kFirstVersion) continue;
    const auto found = std::find_if(there.Fields().begin(), there.Fields().end(),
                                    [&](const auto& field) { return field.name == wanted.name; });
    if (found == there.Fields().end())
      findings.push_back(Named("field ", wanted.name, " is missing"));
    else if (found->type != wanted.type || found->size != wanted.size)
      findings.push_back(Named("field ", wanted.name, " has another type"));
  }
  if (table == kExposureTable && !there.Fields().empty() && !there.Fields().front().isCounter)
    findings.push_back(Named("field ", there.Fields().front().name, " is no counter"));
}

bool HasIndex(const dao::TableDef& table, const LogIndex& wanted) {
  return std::any_of(table.Indexes().begin(), table.Indexes().end(), [&](const dao::Index& index) {
    return index.name == wanted.name && index.fields.size() == wanted.fields;
  });
}

void CheckIndexes(dao::Database& log, Findings& findings) {
  const dao::TableDef exposures = log.TableDefs(kExposureTable);
  for (const LogIndex& wanted : ExposureIndexes())
    if (!HasIndex(exposures, wanted)) findings.push_back(Named("index ", wanted.name, " is missing"));
}

std::string MissingQuery() {
  return Named("SELECT TConfig.tCfgSSet From TConfig WHERE TConfig.tCfgSKey = '", kMissingKey, "'");
}

void ReadRanges(std::string_view text, std::vector<IdRange>& ranges) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    IdRange range;
    auto [rest, error] = std::from_chars(at, end, range.first);
    if (error != std::errc()) return;
    range.last = range.first;
    if (rest < end && *rest == '-') rest = std::from_chars(rest + 1, end, range.last).ptr;
    ranges.push_back(range);
    at = std::find_if(rest, end, [](char c) { return c >= '0' && c <= '9'; });
  }
}

std::vector<IdRange> NotedMissing(dao::Database& log) {
  std::vector<IdRange> noted;
  if (!db::TableExists(log, kConfigTable)) return noted;
  const auto rows = log.OpenRecordset(MissingQuery(), dao::RecordsetType::kSnapshot);
  for (; !rows->IsEOF(); rows->MoveNext()) ReadRanges(rows->Fields(0).Text(), noted);
  std::sort(noted.begin(), noted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  return noted;
}

// The parts of `ranges` that lie in none of `without`; both in ascending order.
std::vector<IdRange> Difference(const std::vector<IdRange>& ranges, const std::vector<IdRange>& without) {
  std::vector<IdRange> rest;
  for (IdRange range : ranges) {
    for (const IdRange& each : without) {
      if (each.last < range.first) continue;
      if (each.first > range.last) break;
      if (each.first > range.first) rest.push_back({range.first, each.first - 1});
      range.first = each.last + 1;
    }
    if (range.first <= range.last) rest.push_back(range);
  }
  return rest;
}

void AddConfigRow(dao::Database& log, std::string_view key, std::string_view value) {
  const auto table = log.OpenRecordset(std::string(kConfigTable), dao::RecordsetType::kTable);
  table->AddNew();
  table->Fields("tCfgSKey").SetText(key);
  table->Fields("tCfgSSet").SetText(value);
  table->Update();
}

// The fields tell which layout the log has.
std::string_view VersionByFields(dao::Database& log) {
  Findings findings;
  CheckFields(log, kExposureTable, ExposureFields(), kLogVersion, findings);
  if (findings.empty()) return kLogVersion;
  findings.clear();
  CheckFields(log, kExposureTable, ExposureFields(), kFirstVersion, findings);
  return findings.empty() ? kFirstVersion : std::string_view();
}

}  // namespace

std::vector<std::string> CheckLog(dao::Database& log) {
  Findings findings;
  const auto version = VersionOf(log);
  for (const auto& [table, fields] :
       {std::pair{kConfigTable, ConfigFields()}, {kExposureTable, ExposureFields()}}) {
    if (db::TableExists(log, table))
      CheckFields(log, table, fields, version.value_or(std::string(kLogVersion)), findings);
    else
      findings.push_back(Named("table ", table, " is missing"));
  }
  if (!findings.empty()) return findings;
  if (!version || version->empty()) findings.push_back(Named("TConfig has no \"", kVersionKey, "\""));
  CheckIndexes(log, findings);
  if (const auto missing = MissingExposures(log); !missing.empty())
    findings.push_back(std::to_string(dao::CountOf(missing)) + " exposures are missing, numbers " +
                       dao::RangesText(missing, 200));
  return findings;
}

std::vector<std::string> CompleteLog(dao::Database& log) {
  std::vector<std::string> restored;
  if (!db::TableExists(log, kExposureTable)) return restored;
  if (!db::TableExists(log, kConfigTable)) {
    log.Execute(ConfigDeclaration());
    restored.emplace_back(kConfigTable);
  }
  const std::string_view version = VersionByFields(log);
  if (VersionOf(log).value_or("").empty() && !version.empty()) {
    WriteLogConfig(log, kVersionKey, version);
    restored.emplace_back(kVersionKey);
  }
  const dao::TableDef exposures = log.TableDefs(kExposureTable);
  for (const LogIndex& wanted : ExposureIndexes()) {
    if (version.empty() || HasIndex(exposures, wanted)) continue;
    log.Execute(Named("DROP INDEX IF EXISTS ", wanted.name, ""));
    log.Execute(wanted.declaration);
    restored.emplace_back(wanted.name);
  }
  return restored;
}

std::vector<IdRange> MissingExposures(dao::Database& log) {
  if (!db::TableExists(log, kExposureTable)) return {};
  const auto unused = log.UnusedIds(kExposureTable);
  return unused.empty() ? unused : Difference(unused, NotedMissing(log));
}

void NoteMissingExposures(dao::Database& log, const std::vector<IdRange>& missing) {
  constexpr std::size_t kMost = 255;
  std::string row;
  for (const IdRange& range : missing) {
    const std::string text = dao::RangesText({range}, kMost);
    if (!row.empty() && row.size() + 1 + text.size() > kMost) {
      AddConfigRow(log, kMissingKey, row);
      row.clear();
    }
    row += (row.empty() ? "" : ",") + text;
  }
  if (!row.empty()) AddConfigRow(log, kMissingKey, row);
}

}  // namespace varnlog::core
