#include "db/dao/sqlite/rows/FileBulkRows.h"

#include <array>
#include <utility>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

namespace {

std::string FieldList(const TableSchema& table) {
  std::string list;
  for (const FieldDef& field : table.fields) list += (list.empty() ? "" : ", ") + QuoteIdentifier(field.name);
  return list;
}

std::string Parameters(std::size_t count) {
  std::string list;
  for (std::size_t i = 0; i < count; ++i) list += i == 0 ? "?" : ",?";
  return list;
}

void BindValue(Statement& statement, int parameter, const Value& value, std::array<char, 19>& iso) {
  if (const auto* text = std::get_if<std::string>(&value))
    return statement.Bind(parameter, std::string_view(*text));
  if (const auto* flag = std::get_if<bool>(&value)) return statement.Bind(parameter, std::int64_t{*flag});
  if (const auto* number = std::get_if<std::int64_t>(&value)) return statement.Bind(parameter, *number);
  if (const auto* real = std::get_if<double>(&value)) return statement.Bind(parameter, *real);
  if (const auto* date = std::get_if<platform::DateTime>(&value)) {
    date->WriteIso(iso.data());
    return statement.Bind(parameter, std::string_view(iso.data(), iso.size()));
  }
  statement.BindNull(parameter);
}

bool IsDate(std::string_view stored, platform::DateTime date) {
  std::array<char, 19> iso;
  date.WriteIso(iso.data());
  return stored == std::string_view(iso.data(), iso.size());
}

bool IsStored(const Statement& row, int column, const Value& value) {
  const int type = row.ColumnType(column);
  if (const auto* text = std::get_if<std::string>(&value))
    return type == SQLITE_TEXT && row.Text(column) == *text;
  if (const auto* flag = std::get_if<bool>(&value))
    return type == SQLITE_INTEGER && row.Number(column) == std::int64_t{*flag};
  if (const auto* number = std::get_if<std::int64_t>(&value))
    return type == SQLITE_INTEGER && row.Number(column) == *number;
  if (const auto* real = std::get_if<double>(&value))
    return type == SQLITE_FLOAT && row.Real(column) == *real;
  if (const auto* date = std::get_if<platform::DateTime>(&value))
    return type == SQLITE_TEXT && IsDate(row.Text(column), *date);
  return type == SQLITE_NULL;
}

// Has the storage ask while it works whether to go on.
class Interruptible {
 public:
  Interruptible(Connection& connection, const std::function<bool()>& progress)
      : storage_(connection), progress_(progress) {
    constexpr int kStepsBetweenQuestions = 20000;
    sqlite3_progress_handler(storage_.Handle(), kStepsBetweenQuestions, &Interruptible::Ask, this);
  }
  ~Interruptible() {
    if (storage_.IsOpen()) sqlite3_progress_handler(storage_.Handle(), 0, nullptr, nullptr);
  }
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;

 private:
  static int Ask(void* self) { return static_cast<const Interruptible*>(self)->progress_() ? 0 : 1; }

  Connection& storage_;
  const std::function<bool()>& progress_;
};

}  // namespace

FileBulkRows::FileBulkRows(std::shared_ptr<FileStorage> storage, std::string_view table)
    : storage_(std::move(storage)), table_(storage_->Table(table)) {
  const std::string name = QuoteIdentifier(table_->name);
  const std::string fields = FieldList(*table_);
  insert_ = Statement(storage_->File(), "INSERT OR FAIL INTO " + name + " (" + fields + ") VALUES (" +
                                            Parameters(table_->fields.size()) + ")");
  find_ = Statement(storage_->File(),
                    "SELECT " + fields + ", rowid FROM " + name + " WHERE rowid >= ?1 ORDER BY rowid");
}

void FileBulkRows::SuspendIndexes() {
  Statement indexes(storage_->File(),
                    "SELECT name, sql FROM sqlite_schema WHERE type = 'index' AND sql IS NOT NULL AND "
                    "tbl_name = ?1 COLLATE NOCASE");
  indexes.Bind(1, std::string_view(table_->name));
  std::vector<std::string> names;
  while (indexes.Step()) {
    names.emplace_back(indexes.Text(0));
    suspended_.emplace_back(indexes.Text(1));
  }
  for (const std::string& name : names) storage_->File().Execute("DROP INDEX " + QuoteIdentifier(name));
}

void FileBulkRows::RestoreIndexes(const std::function<bool()>& progress) {
  const Interruptible interruptible(storage_->File(), progress);
  for (const std::string& declaration : suspended_) storage_->File().Execute(declaration);
  suspended_.clear();
  storage_->ForgetSchema();
}

void FileBulkRows::Insert(std::span<const Value> row) {
  dates_.resize(row.size());
  for (std::size_t i = 0; i < row.size(); ++i) {
    BindValue(insert_, static_cast<int>(i) + 1, row[i], dates_[i]);
  }
  insert_.Run();
}

bool FileBulkRows::IsAt(std::int64_t id) const {
  return isFinding_ && find_.Number(static_cast<int>(table_->fields.size())) == id;
}

// The row after the current one is the next one nearly always.
bool FileBulkRows::GoTo(std::int64_t id) {
  if (isFinding_) isFinding_ = find_.Step();
  if (IsAt(id)) return true;
  find_.Reset();
  find_.Bind(1, id);
  isFinding_ = find_.Step();
  return IsAt(id);
}

int FileBulkRows::FindDifference(std::int64_t id, std::span<const Value> row) {
  if (!GoTo(id)) return kMissing;
  for (int i = 0; i < static_cast<int>(row.size()); ++i) {
    if (!IsStored(find_, i, row[static_cast<std::size_t>(i)])) return i;
  }
  return kEqual;
}

void FileBulkRows::SetLastId(std::int64_t id) {
  const std::string_view name = table_->name;
  Statement update(storage_->File(), "UPDATE sqlite_sequence SET seq = max(seq, ?1) WHERE name = ?2");
  update.Bind(1, id);
  update.Bind(2, name);
  update.Run();
  Statement insert(storage_->File(),
                   "INSERT INTO sqlite_sequence (name, seq) SELECT ?2, ?1 WHERE NOT EXISTS "
                   "(SELECT 1 FROM sqlite_sequence WHERE name = ?2)");
  insert.Bind(1, id);
  insert.Bind(2, name);
  insert.Run();
}

std::unique_ptr<BulkRows> FileStorage::OpenBulkRows(std::string_view table) {
  return std::make_unique<FileBulkRows>(Self(), table);
}

}  // namespace varnlog::dao
