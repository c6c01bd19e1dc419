#include <utility>

#include "db/dao/TableScan.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

namespace {

std::string ScanSql(const TableSchema& table, std::span<const std::string> fields, const ScanRange& range) {
  std::string list;
  for (const std::string& field : fields) list += (list.empty() ? "" : ", ") + QuoteIdentifier(field);
  const std::string order = range.order.empty() ? "rowid" : QuoteIdentifier(range.order);
  return "SELECT " + list + " FROM " + QuoteIdentifier(table.name) + " WHERE " + order +
         " BETWEEN ?1 AND ?2 ORDER BY " + order + (range.order.empty() ? "" : ", rowid");
}

class FileTableScan final : public TableScan {
 public:
  FileTableScan(std::shared_ptr<FileStorage> storage, std::string_view table,
                std::span<const std::string> fields, const ScanRange& range)
      : TableScan(fields.size()),
        storage_(std::move(storage)),
        rows_(storage_->File(), ScanSql(*storage_->Table(table), fields, range)) {
    rows_.Bind(1, range.first);
    rows_.Bind(2, range.last);
  }

  [[nodiscard]] bool Next() override {
    if (!rows_.Step()) return false;
    rows_.GetValues(values_);
    return true;
  }

 private:
  std::shared_ptr<FileStorage> storage_;
  Statement rows_;
};

}  // namespace

std::unique_ptr<TableScan> FileStorage::Scan(std::string_view table, std::span<const std::string> fields,
                                             const ScanRange& range) {
  return std::make_unique<FileTableScan>(Self(), table, fields, range);
}

std::int64_t FileStorage::Greatest(std::string_view table, std::string_view field) {
  Statement greatest(
      file_, "SELECT max(" + QuoteIdentifier(field) + ") FROM " + QuoteIdentifier(Table(table)->name));
  ResetAtEnd reset(greatest);
  return greatest.Step() ? greatest.Number(0) : 0;
}

}  // namespace varnlog::dao
