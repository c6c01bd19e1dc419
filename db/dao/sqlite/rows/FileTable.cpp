#include "db/dao/sqlite/rows/FileTable.h"

#include <array>
#include <limits>
#include <utility>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/rows/FileRowWriter.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kMostDates = 8;

// A date's text must stay until the statement has run.
using DateTexts = std::array<std::array<char, 19>, kMostDates>;

void BindKey(Statement& statement, int parameter, const SeekKey& key, DateTexts& texts) {
  if (const auto* number = std::get_if<std::int64_t>(&key)) return statement.Bind(parameter, *number);
  if (const auto* text = std::get_if<std::string_view>(&key)) return statement.Bind(parameter, *text);
  auto& date = texts[static_cast<std::size_t>(parameter) - 1];
  std::get<platform::DateTime>(key).WriteIso(date.data());
  statement.Bind(parameter, std::string_view(date.data(), date.size()));
}

}  // namespace

FileTable::FileTable(std::shared_ptr<FileStorage> storage, std::shared_ptr<const TableSchema> table)
    : TableRecordset(table, std::make_unique<FileRowWriter>(storage, table, AllOrdinals(*table))),
      storage_(std::move(storage)),
      next_(storage_->File(), "SELECT rowid FROM " + QuoteIdentifier(table->name) +
                                  " WHERE rowid > ?1 ORDER BY rowid LIMIT 1") {
  GoToFirst();
}

std::optional<std::int64_t> FileTable::FirstId() {
  return IdBehind(std::numeric_limits<std::int64_t>::min());
}

std::optional<std::int64_t> FileTable::IdBehind(std::int64_t id) {
  ResetAtEnd reset(next_);
  next_.Bind(1, id);
  if (!next_.Step()) return std::nullopt;
  return next_.Number(0);
}

std::int64_t FileTable::RecordCount() const {
  Statement count(storage_->File(), "SELECT count(*) FROM " + QuoteIdentifier(Table().name));
  ResetAtEnd reset(count);
  return count.Step() ? count.Number(0) : 0;
}

void FileTable::UseIndex(const Index& index) {
  for (SeekPath& path : paths_)
    if (path.index == &index) {
      path_ = &path;
      return;
    }
  AddPath(index);
}

void FileTable::AddPath(const Index& index) {
  SeekPath& path = paths_.emplace_back();
  path.index = &index;
  path.byKeyCount.resize(index.fields.size());
  for (std::size_t i = 0; i < index.fields.size(); ++i) {
    const std::size_t field = *Table().FieldAt(index.fields[i]);
    if (Table().fields[field].type != FieldType::kDate || !Table().HasIndexOn(field)) continue;
    path.dateKey = i;
    path.dateField = field;
    path.hasDate = true;
  }
  path_ = &path;
}

// Known only while nobody else can write, that is within a transaction.
bool FileTable::IsLaterThanAll(std::span<const SeekKey> keys) {
  SeekPath& path = *path_;
  if (!path.hasDate || keys.size() <= path.dateKey || !storage_->InWork()) return false;
  const auto* const date = std::get_if<platform::DateTime>(&keys[path.dateKey]);
  if (date == nullptr) return false;
  if (path.changes != storage_->File().Watch().OwnChanges() ||
      path.epoch != storage_->File().Watch().Epoch()) {
    if (!path.latest.IsPrepared())
      path.latest =
          Statement(storage_->File(), "SELECT max(" + QuoteIdentifier(Table().fields[path.dateField].name) +
                                          ") FROM " + QuoteIdentifier(Table().name));
    ResetAtEnd reset(path.latest);
    path.latestDate = path.latest.Step() ? std::string(path.latest.Text(0)) : std::string();
    path.changes = storage_->File().Watch().OwnChanges();
    path.epoch = storage_->File().Watch().Epoch();
  }
  std::array<char, 19> text;
  date->WriteIso(text.data());
  return std::string_view(text.data(), text.size()) > path.latestDate;
}

// Keeps what IsLaterThanAll() knows across rows that this record set adds itself.
void FileTable::NoteAdded(const CopyBuffer& buffer) {
  for (SeekPath& path : paths_) {
    if (!path.hasDate || path.changes + 1 != storage_->File().Watch().OwnChanges()) continue;
    ++path.changes;
    const std::string& added = buffer[path.dateField].text;
    if (added > path.latestDate) path.latestDate.assign(added);
  }
}

// Of several rows with the same values the oldest is found, whichever way the storage takes.
Statement& FileTable::SeekStatement(std::size_t keyCount) {
  Statement& seek = path_->byKeyCount[keyCount - 1];
  if (seek.IsPrepared()) return seek;
  std::string conditions;
  for (std::size_t i = 0; i < keyCount; ++i)
    conditions += (i == 0 ? "" : " AND ") + QuoteIdentifier(path_->index->fields[i]) + " = ?";
  seek = Statement(storage_->File(), "SELECT rowid FROM " + QuoteIdentifier(Table().name) + " WHERE " +
                                         conditions + " ORDER BY rowid LIMIT 1");
  return seek;
}

std::optional<std::int64_t> FileTable::Find(std::span<const SeekKey> keys) {
  if (IsLaterThanAll(keys)) return std::nullopt;
  Statement& seek = SeekStatement(keys.size());
  ResetAtEnd reset(seek);
  DateTexts dates;
  int parameter = 0;
  for (const SeekKey& key : keys) BindKey(seek, ++parameter, key, dates);
  if (!seek.Step()) return std::nullopt;
  return seek.Number(0);
}

}  // namespace varnlog::dao
