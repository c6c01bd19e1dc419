#include "server/LogTransfer.h"

#include <algorithm>
#include <array>

#include "core/LogLayout.h"
#include "db/dao/BulkRows.h"
#include "db/dao/TableScan.h"
#include "db/modCommon.h"
#include "seals/SealedFields.h"

namespace varnlog::server {

namespace {

using Row = std::vector<dao::Value>;

constexpr std::int64_t kRowsPerReport = 8192;
/// The tables whose rows are numbered.
constexpr std::array<const char*, 3> kNumbered = {seals::kExposures, seals::kHistory, seals::kSeals};

std::vector<std::string> FieldsOf(dao::Database& log, std::string_view table) {
  std::vector<std::string> names;
  const dao::TableDef definition = log.TableDefs(table);
  for (const dao::FieldDef& field : definition.Fields()) names.push_back(field.name);
  return names;
}

dao::Value ValueOf(const dao::CellView& cell) {
  switch (cell.kind) {
    case dao::CellKind::kInteger:
      return cell.integer;
    case dao::CellKind::kReal:
      return cell.real;
    case dao::CellKind::kText:
    case dao::CellKind::kBytes:
      return std::string(cell.text);
    default:
      return {};
  }
}

void Take(const std::vector<dao::CellView>& cells, Row& row) {
  row.resize(cells.size());
  std::ranges::transform(cells, row.begin(), ValueOf);
}

// The last number that was given out, whether or not its row is still there.
std::int64_t LastNumber(dao::Database& log, std::string_view table, const std::string& counter) {
  const auto unused = log.UnusedIds(table);
  return std::max(log.Greatest(table, counter), unused.empty() ? 0 : unused.back().last);
}

class Mover {
 public:
  Mover(dao::Database& source, dao::Database& target, const TransferProgress& progress)
      : source_(source), target_(target), progress_(progress) {}

  std::int64_t Write(const std::string& table) {
    const auto fields = FieldsOf(target_, table);
    const auto rows = target_.OpenBulkRows(table);
    if (table != core::kConfigTable) rows->SuspendIndexes();
    const std::int64_t count = ForEach(table, fields, [&rows](const Row& row) { rows->Insert(row); });
    if (table == core::kConfigTable) return count;
    rows->SetLastId(LastNumber(source_, table, fields.front()));
    rows->RestoreIndexes([this] { return !progress_ || progress_(rows_); });
    return count;
  }

  void Compare(const std::string& table, std::int64_t count) {
    const auto fields = FieldsOf(target_, table);
    const auto rows = target_.OpenBulkRows(table);
    const std::int64_t compared = ForEach(table, fields, [&](const Row& row) {
      const auto number = std::get<std::int64_t>(row.front());
      const int field = rows->FindDifference(number, row);
      if (field != dao::BulkRows::kEqual)
        Differ(table, field == dao::BulkRows::kMissing ? "row" : fields[static_cast<std::size_t>(field)],
               number);
    });
    if (compared != count || target_.OpenRecordset(table)->RecordCount() != count)
      Differ(table, "rows", count);
    values_ += compared * static_cast<std::int64_t>(fields.size());
  }

  // Rows without a number are told apart by their order.
  void CompareSettings() {
    const std::string table(core::kConfigTable);
    const auto fields = FieldsOf(target_, table);
    std::vector<Row> there;
    const auto found = target_.Scan(table, fields, {});
    while (found->Next()) Take(found->Values(), there.emplace_back());
    std::size_t next = 0;
    static_cast<void>(ForEach(table, fields, [&](const Row& row) {
      if (next == there.size() || there[next] != row)
        Differ(table, "row", static_cast<std::int64_t>(next) + 1);
      ++next;
    }));
    if (next != there.size()) Differ(table, "rows", static_cast<std::int64_t>(next));
    values_ += static_cast<std::int64_t>(next * fields.size());
  }

  [[nodiscard]] std::int64_t Values() const { return values_; }

 private:
  template <typename OnRow>
  std::int64_t ForEach(const std::string& table, const std::vector<std::string>& fields, const OnRow& onRow) {
    const auto scan = source_.Scan(table, fields, {});
    Row row;
    std::int64_t count = 0;
    for (; scan->Next(); ++count) {
      Take(scan->Values(), row);
      onRow(row);
      if (++rows_ % kRowsPerReport == 0 && progress_ && !progress_(rows_))
        throw dao::EngineError(dao::ErrorNumber::kCancelled, "The operation was cancelled.");
    }
    return count;
  }

  [[noreturn]] static void Differ(const std::string& table, const std::string& what, std::int64_t number) {
    throw dao::EngineError(dao::ErrorNumber::kDamaged,
                           "The copy differs: " + table + ", " + what + ", " + std::to_string(number) + ".");
  }

  dao::Database& source_;
  dao::Database& target_;
  const TransferProgress& progress_;
  std::int64_t rows_ = 0;
  std::int64_t values_ = 0;
};

}  // namespace

Transfer TransferLog(dao::Database& source, dao::Database& target, const TransferProgress& progress) {
  Mover mover(source, target, progress);
  target.Execute("DELETE FROM \"TConfig\"");
  target.Execute("DELETE FROM \"TSeal\"");
  static_cast<void>(mover.Write(std::string(core::kConfigTable)));
  std::array<std::int64_t, kNumbered.size()> counts{};
  for (std::size_t i = 0; i < kNumbered.size(); ++i) counts[i] = mover.Write(kNumbered[i]);
  mover.CompareSettings();
  for (std::size_t i = 0; i < kNumbered.size(); ++i) mover.Compare(kNumbered[i], counts[i]);
  return {counts[0], counts[1], mover.Values(), seals::ReadHead(target)};
}

}  // namespace varnlog::server
