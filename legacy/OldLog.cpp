#include "legacy/OldLog.h"

namespace varnlog::legacy {
namespace {

// A log has a handful of settings.
constexpr std::size_t kMostSettings = 1000;

// Where the columns that are there go in a row that has all of them.
struct Projection {
  std::vector<int> columns;
  std::vector<std::size_t> targets;
};

Projection Present(const std::vector<int>& columns) {
  Projection present;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] < 0) continue;
    present.columns.push_back(columns[i]);
    present.targets.push_back(i);
  }
  return present;
}

// What a row shows in columns that its table lacks: yes/no is never NULL.
std::vector<Value> EmptyRow(std::span<const core::LogField> columns) {
  std::vector<Value> row(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].type == dao::FieldType::kBoolean) row[i] = false;
  }
  return row;
}

RowCount ReadProjected(const JetDatabase& database, const JetTable& table, const std::vector<int>& columns,
                       std::span<const core::LogField> wanted, const RowVisitor& visitor, FaultList& faults) {
  const Projection present = Present(columns);
  if (present.columns.size() == columns.size()) return database.Read(table, columns, visitor, faults);
  std::vector<Value> row = EmptyRow(wanted);
  const auto widen = [&](const JetRow& stored) {
    for (std::size_t i = 0; i < stored.values.size(); ++i) row[present.targets[i]] = stored.values[i];
    return visitor({stored.place, row, stored.isWhole});
  };
  return database.Read(table, present.columns, widen, faults);
}

}  // namespace

Result<OldLog> OldLog::Open(Bytes file) {
  auto database = JetDatabase::Open(file);
  if (!database) return database.Why();
  auto exposures = database->Table(core::kExposureTable);
  if (!exposures) {
    // A table that a damaged catalogue does not list may well be there.
    const bool isSound = database->Faults().IsEmpty();
    return isSound ? exposures.Why() : Fault{FaultKind::kCatalogueUnread};
  }
  OldLog log(std::move(*database), std::move(*exposures));
  log.faults_ = log.database_.Faults();
  log.columns_ = MatchColumns(log.exposures_, core::ExposureFields(), log.faults_);
  log.ReadSettings();
  return log;
}

void OldLog::ReadSettings() {
  const auto table = database_.Table(core::kConfigTable);
  if (!table) return faults_.Add(table.Why());
  const std::vector<int> columns = MatchColumns(*table, core::ConfigFields(), faults_);
  const auto take = [this](const JetRow& row) {
    settings_.emplace_back(row.values[0], row.values[1]);
    return settings_.size() < kMostSettings;
  };
  ReadProjected(database_, *table, columns, core::ConfigFields(), take, faults_);
}

std::string OldLog::Version() const {
  for (const auto& [key, value] : settings_) {
    const auto* name = std::get_if<std::string>(&key);
    const auto* version = std::get_if<std::string>(&value);
    if (name != nullptr && version != nullptr && SameName(*name, core::kVersionKey)) return *version;
  }
  return {};
}

RowCount OldLog::ReadExposures(const RowVisitor& visitor, FaultList& faults) const {
  return ReadProjected(database_, exposures_, columns_, core::ExposureFields(), visitor, faults);
}

}  // namespace varnlog::legacy
