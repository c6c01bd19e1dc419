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

// In the order in which they come: a change is sent behind its row of the history.
// `table` is nullptr for a script.
void ServerStorage::Append(const TableSchema* table, std::string_view text) {
  if (added_.empty() || added_.back().table != table) added_.push_back({table, {}});
  added_.back().lines.append(text);
  if (added_.back().lines.size() >= kMostAddedBytes && !inPart_)
    SendAdded();
  else if (session_ != nullptr)
    session_->GoOnSending();
}

void ServerStorage::AddLater(const TableSchema& table, std::string_view line) {
  NoteWritten(table);
  addedRows_[table.name];
  ++unsentRows_[table.name];
  ++rowsAdded_;
  Append(&table, line);
}

void ServerStorage::WriteLater(const TableSchema& table, std::int64_t row, std::string_view statement) {
  NoteWritten(table);
  addedRows_[table.name].insert(row);
  Append(nullptr, std::string(statement) + "; ");
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

std::int64_t ServerStorage::UnsentRows(const TableSchema& table) const {
  const auto rows = unsentRows_.find(table.name);
  return rows == unsentRows_.end() ? 0 : rows->second;
}

void ServerStorage::ForgetAdded() noexcept {
  added_.clear();
  unsentRows_.clear();
  addedRows_.clear();
}

void ServerStorage::SendAdded() {
  if (added_.empty()) return;
  const std::vector<Added> all = std::exchange(added_, {});
  ForgetAdded();
  ++sent_;
  try {
    for (const Added& each : all) {
      if (each.table == nullptr) {
        static_cast<void>(Line().RunScript(each.lines));
      } else {
        MakeYears(*each.table, each.lines);
        Line().StartCopy(CopyStatement(*each.table), each.lines);
      }
    }
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
