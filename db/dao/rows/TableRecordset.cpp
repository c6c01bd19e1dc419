#include "db/dao/rows/TableRecordset.h"

#include <array>
#include <limits>
#include <numeric>
#include <string>
#include <utility>

#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kMostKeys = 8;

// A date's text must stay until the statement has run.
using DateTexts = std::array<std::array<char, 19>, kMostKeys>;

void BindKey(Statement& statement, int parameter, const SeekKey& key, DateTexts& texts) {
  if (const auto* number = std::get_if<std::int64_t>(&key)) return statement.Bind(parameter, *number);
  if (const auto* text = std::get_if<std::string_view>(&key)) return statement.Bind(parameter, *text);
  auto& date = texts[static_cast<std::size_t>(parameter) - 1];
  std::get<platform::DateTime>(key).WriteIso(date.data());
  statement.Bind(parameter, std::string_view(date.data(), date.size()));
}

std::vector<std::size_t> AllOrdinals(const TableSchema& table) {
  std::vector<std::size_t> ordinals(table.fields.size());
  std::iota(ordinals.begin(), ordinals.end(), std::size_t{0});
  return ordinals;
}

}  // namespace

TableRecordset::TableRecordset(std::shared_ptr<Connection> connection,
                               std::shared_ptr<const TableSchema> table)
    : connection_(std::move(connection)),
      table_(std::move(table)),
      fields_({table_, &table_->fields}, *this),
      writer_(connection_, table_, AllOrdinals(*table_)),
      next_(*connection_, "SELECT rowid FROM " + QuoteIdentifier(table_->name) +
                              " WHERE rowid > ?1 ORDER BY rowid LIMIT 1") {
  GoTo(NextId(next_, std::numeric_limits<std::int64_t>::min()));
  isEmpty_ = !rowId_.has_value();
}

Field& TableRecordset::Fields(std::size_t ordinal) {
  if (ordinal < fields_.size()) return fields_[ordinal];
  throw EngineError(ErrorNumber::kItemNotFound,
                    "The table has no field number " + std::to_string(ordinal) + ".");
}

bool TableRecordset::IsBOF() const {
  return isEmpty_;
}
bool TableRecordset::IsEOF() const {
  return !rowId_.has_value() && !noMatch_;
}

void TableRecordset::GoTo(std::optional<std::int64_t> rowId) {
  fields_.Buffer().Close();
  rowId_ = rowId;
  row_.reset();
  isEmpty_ = false;
  noMatch_ = false;
}

std::optional<std::int64_t> TableRecordset::NextId(Statement& statement, std::int64_t after) {
  ResetAtEnd reset(statement);
  statement.Bind(1, after);
  if (!statement.Step()) return std::nullopt;
  return statement.Number(0);
}

std::int64_t TableRecordset::RequireRow() const {
  if (!rowId_) throw EngineError(ErrorNumber::kNoCurrentRecord, "There is no current record.");
  return *rowId_;
}

void TableRecordset::MoveFirst() {
  const auto first = NextId(next_, std::numeric_limits<std::int64_t>::min());
  if (!first) throw EngineError(ErrorNumber::kNoCurrentRecord, "There is no current record.");
  GoTo(first);
}

void TableRecordset::MoveNext() {
  GoTo(NextId(next_, RequireRow()));
}

std::int64_t TableRecordset::RecordCount() const {
  Statement count(*connection_, "SELECT count(*) FROM " + QuoteIdentifier(table_->name));
  ResetAtEnd reset(count);
  return count.Step() ? count.Number(0) : 0;
}

CellView TableRecordset::CurrentCell(std::size_t ordinal) {
  if (row_ == nullptr) row_ = writer_.Read(RequireRow());
  if (row_->IsDeleted(0)) throw EngineError(ErrorNumber::kRecordDeleted, "The record has been deleted.");
  return row_->At(0, ordinal);
}

void TableRecordset::AddNew() {
  writer_.BeginAdd(fields_.Buffer());
}

void TableRecordset::Edit() {
  writer_.BeginEdit(fields_.Buffer(), RequireRow());
}

void TableRecordset::Update() {
  CopyBuffer& buffer = fields_.Buffer();
  if (buffer.state() == CopyBuffer::State::kAdding) {
    writer_.Add(buffer);
    NoteAdded();
  } else if (buffer.state() == CopyBuffer::State::kEditing) {
    row_.reset();
    writer_.Change(buffer);
  } else {
    throw EngineError(ErrorNumber::kUpdateWithoutEdit, "Update comes after AddNew or Edit only.");
  }
}

void TableRecordset::SetIndex(std::string_view name) {
  if (path_ != nullptr && SameName(path_->index.name, name)) return;
  for (SeekPath& path : paths_)
    if (SameName(path.index.name, name)) {
      path_ = &path;
      return;
    }
  for (const Index& index : table_->indexes)
    if (SameName(index.name, name)) {
      AddPath(index);
      return;
    }
  throw EngineError(ErrorNumber::kItemNotFound,
                    "'" + std::string(name) + "' is no index of the table '" + table_->name + "'.");
}

void TableRecordset::AddPath(const Index& index) {
  SeekPath& path = paths_.emplace_back();
  path.index = index;
  path.byKeyCount.resize(index.fields.size());
  for (std::size_t i = 0; i < index.fields.size(); ++i) {
    const std::size_t field = *table_->FieldAt(index.fields[i]);
    if (table_->fields[field].type != FieldType::kDate || !table_->HasIndexOn(field)) continue;
    path.dateKey = i;
    path.dateField = field;
    path.hasDate = true;
  }
  path_ = &path;
}

// Known only while nobody else can write, that is within a transaction.
bool TableRecordset::IsLaterThanAll(const SeekKey* keys, std::size_t keyCount) {
  SeekPath& path = *path_;
  if (!path.hasDate || keyCount <= path.dateKey || !connection_->InWork()) return false;
  const auto* const date = std::get_if<platform::DateTime>(&keys[path.dateKey]);
  if (date == nullptr) return false;
  if (path.changes != connection_->OwnChanges() || path.epoch != connection_->Epoch()) {
    if (!path.latest.IsPrepared())
      path.latest =
          Statement(*connection_, "SELECT max(" + QuoteIdentifier(table_->fields[path.dateField].name) +
                                      ") FROM " + QuoteIdentifier(table_->name));
    ResetAtEnd reset(path.latest);
    path.latestDate = path.latest.Step() ? std::string(path.latest.Text(0)) : std::string();
    path.changes = connection_->OwnChanges();
    path.epoch = connection_->Epoch();
  }
  std::array<char, 19> text;
  date->WriteIso(text.data());
  return std::string_view(text.data(), text.size()) > path.latestDate;
}

// Keeps what IsLaterThanAll() knows across rows that this record set adds itself.
void TableRecordset::NoteAdded() {
  for (SeekPath& path : paths_) {
    if (!path.hasDate || path.changes + 1 != connection_->OwnChanges()) continue;
    ++path.changes;
    const std::string& added = std::as_const(fields_.Buffer())[path.dateField].text;
    if (added > path.latestDate) path.latestDate.assign(added);
  }
}

// Of several rows with the same values the oldest is found, whichever way the storage takes.
Statement& TableRecordset::SeekStatement(std::size_t keyCount) {
  Statement& seek = path_->byKeyCount[keyCount - 1];
  if (seek.IsPrepared()) return seek;
  std::string conditions;
  for (std::size_t i = 0; i < keyCount; ++i)
    conditions += (i == 0 ? "" : " AND ") + QuoteIdentifier(path_->index.fields[i]) + " = ?";
  seek = Statement(*connection_, "SELECT rowid FROM " + QuoteIdentifier(table_->name) + " WHERE " +
                                     conditions + " ORDER BY rowid LIMIT 1");
  return seek;
}

void TableRecordset::Seek(std::string_view comparison, std::initializer_list<SeekKey> keys) {
  if (path_ == nullptr) throw EngineError(ErrorNumber::kNotSupported, "Seek needs an index to be set.");
  if (comparison != "=") throw EngineError(ErrorNumber::kNotSupported, "Seek compares with \"=\" only.");
  if (keys.size() == 0 || keys.size() > std::min(path_->index.fields.size(), kMostKeys))
    throw EngineError(ErrorNumber::kNotSupported,
                      "Seek takes as many values as its index has fields, or fewer.");
  if (IsLaterThanAll(keys.begin(), keys.size())) {
    GoTo(std::nullopt);
    noMatch_ = true;
    return;
  }
  Statement& seek = SeekStatement(keys.size());
  ResetAtEnd reset(seek);
  DateTexts dates;
  int parameter = 0;
  for (const SeekKey& key : keys) BindKey(seek, ++parameter, key, dates);
  const bool found = seek.Step();
  GoTo(found ? std::optional(seek.Number(0)) : std::nullopt);
  noMatch_ = !found;
}

}  // namespace varnlog::dao
