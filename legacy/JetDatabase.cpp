#include "legacy/JetDatabase.h"

#include <algorithm>
#include <numeric>
#include <optional>

#include "legacy/JetRowWalk.h"

namespace varnlog::legacy {
namespace {

// The catalogue is itself a table; its definition lies on the same page in every file.
constexpr std::uint32_t kCataloguePage = 2;
constexpr const char* kCatalogueName = "MSysObjects";

// A row of the catalogue: its kind, and where the object's definition lies.
constexpr std::int64_t kTableObject = 1;
constexpr std::int64_t kLinkedOdbcObject = 4;
constexpr std::int64_t kLinkedObject = 6;
constexpr std::uint32_t kSystemFlags = 0x80000002;
constexpr std::uint32_t kPageMask = 0xffffff;

// The object properties, stored beside these, hold nothing that is needed and are never looked at.
enum CatalogueColumn { kId, kName, kType, kFlags, kCatalogueColumns };

std::optional<std::vector<int>> CatalogueColumns(const JetTable& catalogue) {
  std::vector<int> columns;
  for (const char* name : {"Id", "Name", "Type", "Flags"}) columns.push_back(catalogue.ColumnIndex(name));
  const bool allThere = std::all_of(columns.begin(), columns.end(), [](int index) { return index >= 0; });
  return allThere ? std::optional(columns) : std::nullopt;
}

std::int64_t Number(const Value& value) {
  const auto* number = std::get_if<std::int64_t>(&value);
  return number == nullptr ? 0 : *number;
}

}  // namespace

Result<JetDatabase> JetDatabase::Open(Bytes file) {
  const auto header = ReadHeader(file);
  if (!header) return header.Why();
  JetDatabase database(file, *header);
  if (database.pages_.EndsWithinPage()) {
    database.faults_.Add({FaultKind::kTruncated, database.pages_.Count()});
  }
  if (!database.ReadCatalogue()) return Fault{FaultKind::kCatalogueUnread, kCataloguePage};
  return database;
}

bool JetDatabase::ReadCatalogue() {
  auto catalogue = ReadTable(pages_, text_, kCataloguePage);
  if (!catalogue) return false;
  catalogue->name = kCatalogueName;
  const auto columns = CatalogueColumns(*catalogue);
  if (!columns) return false;
  Read(
      *catalogue, *columns,
      [this](const JetRow& row) {
        AddObject(row.values);
        return true;
      },
      faults_);
  return true;
}

void JetDatabase::AddObject(std::span<const Value> object) {
  const auto* name = std::get_if<std::string>(&object[kName]);
  if (name == nullptr) return;
  const std::int64_t type = Number(object[kType]);
  const auto flags = static_cast<std::uint32_t>(Number(object[kFlags]));
  if (type == kLinkedObject || type == kLinkedOdbcObject) linked_.push_back(*name);
  if (type != kTableObject || (flags & kSystemFlags) != 0) return;
  tables_.push_back({*name, static_cast<std::uint32_t>(Number(object[kId])) & kPageMask});
}

std::vector<std::string> JetDatabase::TableNames() const {
  std::vector<std::string> names;
  for (const Entry& entry : tables_) names.push_back(entry.name);
  return names;
}

FaultKind JetDatabase::AbsenceOf(std::string_view name) const {
  const bool isLinked = std::any_of(linked_.begin(), linked_.end(),
                                    [&](const std::string& linked) { return SameName(linked, name); });
  return isLinked ? FaultKind::kTableLinked : FaultKind::kTableMissing;
}

Result<JetTable> JetDatabase::Table(std::string_view name) const {
  const auto entry = std::find_if(tables_.begin(), tables_.end(),
                                  [&](const Entry& candidate) { return SameName(candidate.name, name); });
  if (entry == tables_.end()) return Fault{AbsenceOf(name), 0, -1, std::string(name)};
  auto table = ReadTable(pages_, text_, entry->page);
  if (!table) return Fault{table.Why().kind, table.Why().page, -1, entry->name};
  table->name = entry->name;
  return table;
}

RowCount JetDatabase::Read(const JetTable& table, const RowVisitor& visitor, FaultList& faults) const {
  std::vector<int> columns(table.columns.size());
  std::iota(columns.begin(), columns.end(), 0);
  return Read(table, columns, visitor, faults);
}

RowCount JetDatabase::Read(const JetTable& table, const std::vector<int>& columns, const RowVisitor& visitor,
                           FaultList& faults) const {
  Budget budget(pages_.Size());
  RowDecoder decoder(pages_, text_, table, columns, budget);
  std::vector<Value> values;
  RowCount count;
  count.declared = table.declaredRows;
  const auto decode = [&](RowPlace place, Bytes bytes) {
    JetRow row{place, {}, true};
    if (!decoder.Decode(bytes, place, values, row.isWhole, faults)) return true;
    ++count.read;
    if (row.isWhole) ++count.whole;
    row.values = values;
    return visitor(row);
  };
  const WalkEnd end = WalkRows(pages_, table, budget, faults, decode);
  count.found = end.found;
  if (end.reachedEnd && count.found != count.declared) {
    faults.Add({FaultKind::kRowCount, table.definitionPage, -1, table.name});
  }
  return count;
}

}  // namespace varnlog::legacy
