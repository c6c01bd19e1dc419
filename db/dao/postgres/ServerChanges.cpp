#include <algorithm>
#include <cstddef>
#include <utility>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/sql/JetSql.h"

// What a transaction adds and changes, sent many at once.

namespace varnlog::dao {

namespace {

/// The server takes one lot of this size while the next one is made.
constexpr std::size_t kMostAddedBytes = 256 * 1024;

std::string CopyStatement(const TableSchema& table) {
  std::string copy = "COPY " + QuoteIdentifier(table.name) + " (";
  for (const FieldDef& field : table.fields)
    copy += (&field == &table.fields.front() ? "" : ", ") + QuoteIdentifier(field.name);
  return copy + ") FROM STDIN";
}

}  // namespace

void ServerStorage::SendIfMuch() {
  std::size_t size = script_.size();
  for (const Copied& copied : copies_) size += copied.lines.size();
  if (size >= kMostAddedBytes && !inPart_)
    SendAdded();
  else if (session_ != nullptr)
    session_->GoOnSending();
}

// A change is sent behind its row of the history.
void ServerStorage::AppendScript(std::string_view text) {
  script_ += text;
  SendIfMuch();
}

// An update's changes are those of exposures, before which all exposures may be added; what else comes after
// a change is to be written after it.
void ServerStorage::AddLater(const TableSchema& table, std::string_view line) {
  if (!script_.empty() && !isBulk_) SendAdded();
  NoteWritten(table);
  addedRows_[table.name];
  ++unsentRows_[table.name];
  ++rowsAdded_;
  if (copies_.empty() || copies_.back().table != &table) copies_.push_back({&table, {}});
  copies_.back().lines += line;
  SendIfMuch();
}

void ServerStorage::WriteLater(const TableSchema& table, std::int64_t row, std::string_view statement) {
  NoteWritten(table);
  addedRows_[table.name].insert(row);
  AppendScript(std::string(statement) + "; ");
}

void ServerStorage::AddLaterByScript(const TableSchema& table, std::int64_t row, std::string_view statement) {
  ++unsentRows_[table.name];
  ++rowsAdded_;
  WriteLater(table, row, statement);
}

bool ServerStorage::IsAddedByScript(const TableSchema& table, std::int64_t id) const {
  constexpr std::int64_t kFew = 8;
  const auto before = counters_.find(table.name);
  return !isBulk_ && !yearFields_.contains(table.name) && before != counters_.end() &&
         id - before->second <= kFew;
}

// Rows that are added get numbers above all that are there.
bool ServerStorage::IsToBeWritten(const TableSchema& table, std::int64_t row) const {
  const auto rows = addedRows_.find(table.name);
  if (rows == addedRows_.end()) return false;
  const auto before = counters_.find(table.name);
  return before == counters_.end() || row > before->second || rows->second.contains(row);
}

bool ServerStorage::IsChangedLater(const TableSchema& table, std::int64_t row) const {
  const auto rows = addedRows_.find(table.name);
  return rows != addedRows_.end() && rows->second.contains(row);
}

std::int64_t ServerStorage::UnsentRows(const TableSchema& table) const {
  const auto rows = unsentRows_.find(table.name);
  return rows == unsentRows_.end() ? 0 : rows->second;
}

void ServerStorage::ForgetAdded() noexcept {
  copies_.clear();
  script_.clear();
  unsentRows_.clear();
  addedRows_.clear();
}

void ServerStorage::SendAdded() {
  if (copies_.empty() && script_.empty()) return;
  const std::vector<Copied> copies = std::exchange(copies_, {});
  const std::string script = std::exchange(script_, {});
  ForgetAdded();
  ++sent_;
  try {
    for (const Copied& copied : copies) {
      MakeYears(*copied.table, copied.lines);
      Line().StartCopy(CopyStatement(*copied.table), copied.lines);
    }
    if (!script.empty()) static_cast<void>(Line().RunScript(script));
  } catch (const EngineError& error) {
    if (error.number() == ErrorNumber::kConnectionLost) transaction_ = Transaction::kLost;
    throw;
  }
}

// A year that comes for the first time gets its own part of the table.
void ServerStorage::MakeYears(const TableSchema& table, std::string_view lines) {
  const auto field = yearFields_.find(table.name);
  if (field == yearFields_.end()) return;
  std::string added;
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    std::string_view rest = lines.substr(0, end);
    lines.remove_prefix(end + 1);
    for (std::size_t i = 0; i < field->second; ++i) rest.remove_prefix(rest.find('\t') + 1);
    const std::string_view year = rest.substr(0, 4);
    const bool isNew = year.size() == 4 &&
                       std::ranges::all_of(year, [](char c) { return c >= '0' && c <= '9'; }) &&
                       !years_.contains(year);
    if (!isNew) continue;
    years_.emplace(year);
    added += (added.empty() ? "" : ",") + std::string(year);
  }
  if (!added.empty()) static_cast<void>(Line().RunScript("SELECT varnlog_years('{" + added + "}')"));
}

// Until the server has taken it.
void ServerStorage::SettleAdded() {
  SendAdded();
  try {
    Line().Settle();
  } catch (const EngineError& error) {
    if (error.number() == ErrorNumber::kConnectionLost) transaction_ = Transaction::kLost;
    throw;
  }
}

}  // namespace varnlog::dao
