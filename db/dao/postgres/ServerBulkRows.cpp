#include <algorithm>
#include <utility>

#include "db/dao/BulkRows.h"
#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

/// A value in the form in which the server gives it back; nothing for NULL.
std::optional<std::string> StoredText(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "1" : "0";
  if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  if (const auto* date = std::get_if<platform::DateTime>(&value)) return date->ToIso();
  if (const auto* real = std::get_if<double>(&value)) {
    std::string digits;
    AppendCopyValue(digits, {.kind = CellKind::kReal, .integer = 0, .real = *real, .text = {}});
    return digits;
  }
  return std::nullopt;
}

/// Rows go to the server as they come, many at once; they are read back in slices.
class ServerBulkRows final : public BulkRows {
 public:
  ServerBulkRows(std::shared_ptr<ServerStorage> storage, std::string_view table)
      : storage_(std::move(storage)), table_(storage_->Table(table)) {}

  void SuspendIndexes() override {
    const ServerResult indexes = storage_->Run(
        "SELECT i.relname, replace(pg_get_indexdef(i.oid), ' ON ONLY ', ' ON '), obj_description(i.oid, "
        "'pg_class') FROM pg_index x "
        "JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class c ON c.oid = x.indrelid "
        "WHERE c.relnamespace = current_schema()::regnamespace AND c.relname = $1 AND NOT x.indisunique",
        {std::string_view(table_->name)});
    for (int row = 0; row < indexes.RowCount(); ++row) {
      const std::string name = QuoteIdentifier(indexes.Text(row, 0));
      suspended_.emplace_back(indexes.Text(row, 1));
      if (!indexes.IsNull(row, 2))
        suspended_.push_back("COMMENT ON INDEX " + name + " IS " + QuoteText(indexes.Text(row, 2)));
      static_cast<void>(storage_->RunOnce("DROP INDEX " + name));
    }
  }

  void RestoreIndexes(const std::function<bool()>& progress) override {
    for (const std::string& declaration : suspended_) {
      if (progress && !progress()) throw EngineError(ErrorNumber::kCancelled, "The operation was cancelled.");
      static_cast<void>(storage_->RunOnce(declaration));
    }
    suspended_.clear();
  }

  void Insert(std::span<const Value> row) override {
    line_.clear();
    for (const Value& value : row) {
      if (!line_.empty()) line_ += '\t';
      const auto text = StoredText(value);
      AppendCopyValue(line_, text ? CellView{.kind = CellKind::kText, .integer = 0, .real = 0, .text = *text}
                                  : CellView{});
    }
    line_ += '\n';
    storage_->AddLater(*table_, line_);
  }

  [[nodiscard]] int FindDifference(std::int64_t id, std::span<const Value> row) override {
    if (!GoTo(id)) return kMissing;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const int column = static_cast<int>(i) + 1;
      const auto wanted = StoredText(row[i]);
      const bool isSame = wanted ? !slice_->IsNull(row_, column) && slice_->Text(row_, column) == *wanted
                                 : slice_->IsNull(row_, column);
      if (!isSame) return static_cast<int>(i);
    }
    return kEqual;
  }

  void SetLastId(std::int64_t id) override { storage_->SetCounter(*table_, id); }

 private:
  // The row after the current one is the next one nearly always.
  [[nodiscard]] bool GoTo(std::int64_t id) {
    if (slice_ != nullptr && row_ + 1 < slice_->RowCount()) ++row_;
    if (IsAt(id)) return true;
    std::string columns = QuoteIdentifier(ServerStorage::KeyField(*table_));
    const std::string key = columns;
    for (const FieldDef& field : table_->fields) columns += ", " + QuoteIdentifier(field.name);
    const NumberText from(id);
    slice_ = std::make_unique<ServerResult>(
        storage_->Run("SELECT " + columns + " FROM " + QuoteIdentifier(table_->name) + " WHERE " + key +
                          " >= $1::integer ORDER BY " + key + " LIMIT 8192",
                      {from.View()}));
    row_ = 0;
    return IsAt(id);
  }

  [[nodiscard]] bool IsAt(std::int64_t id) const {
    return slice_ != nullptr && row_ < slice_->RowCount() && slice_->Number(row_, 0) == id;
  }

  std::shared_ptr<ServerStorage> storage_;
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::string> suspended_;  // how the indexes were declared
  std::string line_;
  std::unique_ptr<ServerResult> slice_;
  int row_ = 0;  // the one compared last
};

}  // namespace

std::unique_ptr<BulkRows> ServerStorage::OpenBulkRows(std::string_view table) {
  return std::make_unique<ServerBulkRows>(std::static_pointer_cast<ServerStorage>(shared_from_this()), table);
}

}  // namespace varnlog::dao
