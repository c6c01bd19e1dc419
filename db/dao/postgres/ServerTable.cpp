#include "db/dao/postgres/ServerTable.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <utility>

#include "db/dao/postgres/ServerDialect.h"
#include "db/dao/postgres/ServerRowWriter.h"
#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/text/Collation.h"

namespace varnlog::dao {

namespace {

/// Later than any date.
constexpr const char* kForEver = "9999-99";
constexpr std::size_t kFirstWindow = 64;
constexpr std::size_t kLargestWindow = 8192;
/// With the rows that are added; a window that grows larger is read anew.
constexpr std::size_t kMostEntries = 65536;

std::string TextOf(const SeekKey& key) {
  if (const auto* number = std::get_if<std::int64_t>(&key)) return std::to_string(*number);
  if (const auto* text = std::get_if<std::string_view>(&key)) return std::string(*text);
  return std::get<platform::DateTime>(key).ToIso();
}

// '{"2024-01-01 00:00:00","..."}', each date once.
std::string ListOf(std::span<const platform::DateTime> dates) {
  std::set<std::string> different;
  for (const platform::DateTime& date : dates) different.insert(date.ToIso());
  std::string list = "{";
  for (const std::string& date : different) list += (list.size() == 1 ? "\"" : ",\"") + date + '"';
  return list + "}";
}

bool IsNumber(const std::string& text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

ServerTable::ServerTable(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table)
    : TableRecordset(table, std::make_unique<ServerRowWriter>(storage, table, AllOrdinals(*table))),
      storage_(std::move(storage)),
      key_(QuoteIdentifier(ServerStorage::KeyField(*table))),
      name_(QuoteIdentifier(table->name)) {
  GoToFirst();
}

std::optional<std::int64_t> ServerTable::FirstId() {
  return storage_->NumberFrom(Table(), "min(" + key_ + ")");
}

std::size_t ServerTable::PlaceInBlock(std::int64_t id) const {
  if (block_.ids.empty() || block_.stamp != storage_->RecentStamp()) return block_.ids.size();
  const auto place = std::ranges::lower_bound(block_.ids, id);
  const bool isThere = place != block_.ids.end() && *place == id;
  return isThere ? static_cast<std::size_t>(place - block_.ids.begin()) : block_.ids.size();
}

// One row for who only looks whether there is a next one, then more and more.
void ServerTable::ReadBlock(std::int64_t behind) {
  constexpr std::size_t kLargestBlock = 512;
  const bool goesOn = !block_.ids.empty() && block_.ids.back() == behind;
  const std::size_t most = goesOn ? std::min(block_.ids.size() * 4, kLargestBlock) : 1;
  const NumberText from(behind);
  const ServerResult found =
      storage_->Run("SELECT " + RowColumns() + " FROM " + name_ + " WHERE " + key_ +
                        " > $1::integer ORDER BY " + key_ + " LIMIT " + std::to_string(most),
                    {from.View()});
  block_ = {.ids = {}, .rows = {}, .stamp = storage_->RecentStamp()};
  for (int row = 0; row < found.RowCount(); ++row) {
    auto values = std::make_shared<RowSet>(Table().fields.size());
    values->Append([&](std::size_t column) { return found.Cell(row, static_cast<int>(column) + 1); });
    block_.ids.push_back(found.Number(row, 0));
    block_.rows.push_back(std::move(values));
  }
}

std::optional<std::int64_t> ServerTable::IdBehind(std::int64_t id) {
  if (const std::size_t next = PlaceInBlock(id) + 1; next < block_.ids.size()) return block_.ids[next];
  ReadBlock(id);
  if (block_.ids.empty()) return std::nullopt;
  return block_.ids.front();
}

std::shared_ptr<const RowSet> ServerTable::ReadRow(std::int64_t id) {
  const std::size_t place = PlaceInBlock(id);
  return place < block_.ids.size() ? block_.rows[place] : TableRecordset::ReadRow(id);
}

std::int64_t ServerTable::RecordCount() const {
  return storage_->Run("SELECT count(*) FROM " + name_).Number(0, 0);
}

void ServerTable::UseIndex(const Index& index) {
  ForgetUnsent();
  index_ = &index;
  fields_.clear();
  dateKey_.reset();
  window_ = {};
  expected_ = {};
  for (const std::string& field : index.fields) {
    fields_.push_back(*Table().FieldAt(field));
    const bool isDate = Table().fields[fields_.back()].type == FieldType::kDate;
    if (isDate && Table().HasIndexOn(fields_.back())) dateKey_ = fields_.size() - 1;
  }
}

bool ServerTable::IsText(std::size_t key) const {
  const FieldType type = Table().fields[fields_[key]].type;
  return type == FieldType::kText || type == FieldType::kMemo;
}

std::optional<std::int64_t> ServerTable::Ask(std::span<const SeekKey> keys) {
  std::vector<std::string> texts;
  for (const SeekKey& key : keys) texts.push_back(TextOf(key));
  ServerValues values;
  std::string conditions;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    // What a field of that type cannot hold no row has.
    const bool isNumber = Table().fields[fields_[i]].type != FieldType::kDate && !IsText(i);
    if (isNumber && !IsNumber(texts[i])) return std::nullopt;
    values.emplace_back(texts[i]);
    const std::string field = QuoteIdentifier(index_->fields[i]);
    const std::string parameter = "$" + std::to_string(i + 1);
    conditions +=
        (i == 0 ? "" : " AND ") +
        (IsText(i) ? ServerTextKey(field) + " = jet_text(" + parameter + ")" : field + " = " + parameter);
  }
  const ServerResult found =
      RunForSeek("SELECT min(" + key_ + ") FROM " + name_ + " WHERE " + conditions, values);
  if (found.IsNull(0, 0)) return std::nullopt;
  return found.Number(0, 0);
}

ServerTable::SharedEntry ServerTable::EntryAt(const ServerResult& rows, int row) const {
  Entry entry{.id = rows.Number(row, 0), .values = {}};
  for (int column = 1; column <= static_cast<int>(fields_.size()); ++column)
    entry.values.push_back(rows.IsNull(row, column) ? std::nullopt
                                                    : std::optional(std::string(rows.Text(row, column))));
  return std::make_shared<const Entry>(std::move(entry));
}

std::string ServerTable::RowColumns() const {
  std::string columns = key_;
  for (const FieldDef& field : Table().fields) columns += ", " + QuoteIdentifier(field.name);
  return columns;
}

std::string ServerTable::SeekColumns() const {
  std::string columns = key_;
  for (const std::string& field : index_->fields) columns += ", " + QuoteIdentifier(field);
  return columns;
}

// By the values that are no texts: those are equal or not as they stand.
void ServerTable::Add(Entries& entries, const SharedEntry& entry) const {
  ++entries.count;
  std::string place;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (IsText(i)) continue;
    if (!entry->values[i]) return;
    place.append(*entry->values[i]) += '|';
  }
  entries.rows[std::move(place)].push_back(entry);
}

std::optional<std::int64_t> ServerTable::Oldest(const Entries& entries, std::span<const SeekKey> keys) const {
  std::string place;
  for (std::size_t i = 0; i < fields_.size(); ++i)
    if (!IsText(i)) place.append(TextOf(keys[i])) += '|';
  const auto there = entries.rows.find(place);
  std::optional<std::int64_t> oldest;
  if (there == entries.rows.end()) return oldest;
  for (const SharedEntry& entry : there->second)
    if ((!oldest || entry->id < *oldest) && Fits(*entry, keys)) oldest = entry->id;
  return oldest;
}

bool ServerTable::Fits(const Entry& entry, std::span<const SeekKey> keys) const {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!IsText(i)) continue;
    const auto& value = entry.values[i];
    if (!value || Collation::Instance().Compare(*value, TextOf(keys[i])) != 0) return false;
  }
  return true;
}

// Nobody else can add rows or change them.
bool ServerTable::SeesAll() const {
  return dateKey_ && storage_->InWork() && !storage_->IsReadOnly();
}

void ServerTable::Expect(std::span<const platform::DateTime> dates,
                         std::span<const platform::DateTime> changed) {
  if (!SeesAll()) return;
  // In the order of time the window does it.
  const bool isInWindow =
      std::ranges::all_of(dates, [this](platform::DateTime date) { return HasWindow(date.ToIso()); });
  if (!isInWindow && !std::ranges::is_sorted(dates)) ExpectDates(dates);
  if (changed.empty()) return;
  SettleUnsent();
  const std::string list = ListOf(changed);
  static_cast<ServerRowWriter&>(Writer()).NoteRead(
      RunForSeek("SELECT " + RowColumns() + " FROM " + name_ + " WHERE " + DateField() + " = ANY($1::text[])",
                 {std::string_view(list)}));
}

void ServerTable::ExpectDates(std::span<const platform::DateTime> dates) {
  SettleUnsent();
  expected_ = {.dates = {}, .entries = {}, .epoch = storage_->Epoch(), .changes = storage_->Moves()};
  for (const platform::DateTime& date : dates) expected_.dates.insert(date.ToIso());
  const std::string list = ListOf(dates);
  const ServerResult found = RunForSeek(
      "SELECT " + SeekColumns() + " FROM " + name_ + " WHERE " + DateField() + " = ANY($1::text[])",
      {std::string_view(list)});
  for (int row = 0; row < found.RowCount(); ++row) Add(expected_.entries, EntryAt(found, row));
  AddUnsent([this](const std::string& date) { return expected_.dates.contains(date); }, expected_.entries);
}

bool ServerTable::IsExpected(const std::string& date) const {
  return expected_.epoch == storage_->Epoch() && expected_.changes == storage_->Moves() &&
         expected_.dates.contains(date);
}

void ServerTable::AddUnsent(const std::function<bool(const std::string& date)>& isWanted,
                            Entries& entries) const {
  for (const auto& [place, rows] : unsent_.rows)
    for (const SharedEntry& entry : rows)
      if (isWanted(*DateOf(entry))) Add(entries, entry);
}

bool ServerTable::HasWindow(const std::string& date) const {
  return window_.epoch == storage_->Epoch() && window_.changes == storage_->Moves() &&
         date >= window_.first && date <= window_.last;
}

// False when more rows have that date than a window holds.
bool ServerTable::ReadWindow(const std::string& date) {
  // The last one tells whether it is worth while to read more at a time.
  const bool wasUseful = std::exchange(hits_, 0) * 2 >= windowRows_;
  windowRows_ = wasUseful ? std::clamp(windowRows_ * 4, kFirstWindow, kLargestWindow) : kFirstWindow;
  const ServerResult found = storage_->Run(
      "SELECT " + SeekColumns() + " FROM " + name_ + " WHERE " + DateField() + " >= $1 ORDER BY " +
          DateField() + " NULLS FIRST, " + key_ + " LIMIT " + std::to_string(windowRows_),
      {std::string_view(date)});
  std::vector<SharedEntry> entries;
  for (int row = 0; row < found.RowCount(); ++row) entries.push_back(EntryAt(found, row));
  window_ = {.first = date,
             .last = kForEver,
             .entries = {},
             .epoch = storage_->Epoch(),
             .changes = storage_->Moves()};
  if (entries.size() == windowRows_) {
    // Of the last date some rows may be missing.
    const auto last = DateOf(entries.back());
    std::erase_if(entries, [&](const SharedEntry& entry) { return DateOf(entry) == last; });
    if (entries.empty()) {
      window_.epoch = -1;
      return false;
    }
    window_.last = *DateOf(entries.back());
  }
  for (const SharedEntry& entry : entries) Add(window_.entries, entry);
  AddUnsent([this](const std::string& unsent) { return HasWindow(unsent); }, window_.entries);
  return true;
}

// All rows of one date; false when there are too many.
bool ServerTable::ReadDate(const std::string& date) {
  const ServerResult found = storage_->Run("SELECT " + SeekColumns() + " FROM " + name_ + " WHERE " +
                                               DateField() + " = $1 LIMIT " + std::to_string(kMostEntries),
                                           {std::string_view(date)});
  if (found.RowCount() == static_cast<int>(kMostEntries)) return false;
  expected_ = {.dates = {date}, .entries = {}, .epoch = storage_->Epoch(), .changes = storage_->Moves()};
  for (int row = 0; row < found.RowCount(); ++row) Add(expected_.entries, EntryAt(found, row));
  AddUnsent([&](const std::string& unsent) { return unsent == date; }, expected_.entries);
  return true;
}

void ServerTable::SettleUnsent() {
  const bool isOver = std::exchange(unsentEpoch_, storage_->Epoch()) != storage_->Epoch();
  if (isOver || storage_->UnsentRows(Table()) == 0) unsent_ = {};
}

void ServerTable::ForgetUnsent() {
  if (unsent_.count > 0) storage_->SendAdded();
  unsent_ = {};
}

// Ahead of rows that are not sent yet only when all of them are known here.
ServerResult ServerTable::RunForSeek(const std::string& sql, const ServerValues& values) {
  const bool allAreKnown = storage_->UnsentRows(Table()) == static_cast<std::int64_t>(unsent_.count);
  if (allAreKnown && storage_->InWork()) return storage_->RunAhead(sql, values);
  ServerResult found = storage_->Run(sql, values);
  unsent_ = {};
  return found;
}

// Whether what is not sent yet can be left so: with a date, and all other values by which rows are known
// here.
bool ServerTable::CanWait(std::span<const SeekKey> keys) const {
  return SeesAll() && keys.size() == fields_.size() &&
         std::holds_alternative<platform::DateTime>(keys[*dateKey_]);
}

std::optional<std::int64_t> ServerTable::Find(std::span<const SeekKey> keys) {
  if (!CanWait(keys)) {
    storage_->SendAdded();
    unsent_ = {};
    return Ask(keys);
  }
  SettleUnsent();
  const std::string date = TextOf(keys[*dateKey_]);
  if (HasWindow(date)) {
    ++hits_;
    return Oldest(window_.entries, keys);
  }
  if (IsExpected(date)) return Oldest(expected_.entries, keys);
  // Only what comes in the order of time is likely to go on within a window.
  const bool goesOn = date > std::exchange(sought_, date);
  if (goesOn && ReadWindow(date)) return Oldest(window_.entries, keys);
  if (goesOn && ReadDate(date)) return Oldest(expected_.entries, keys);
  // What is not sent yet is younger than all that is there.
  const auto there = Ask(keys);
  return there ? there : Oldest(unsent_, keys);
}

// The window and the look-ups know the rows that are added through this record set.
void ServerTable::NoteAdded(const CopyBuffer& buffer) {
  if (!dateKey_) return;
  SettleUnsent();
  Entry added{.id = storage_->LastCounter(Table()), .values = {}};
  added.values.reserve(fields_.size());
  for (const std::size_t field : fields_) {
    const CopyBuffer::Cell& cell = buffer[field];
    added.values.push_back(cell.kind == CellKind::kText ? std::optional(cell.text) : std::nullopt);
  }
  const std::string date = added.values[*dateKey_].value_or("");
  const auto entry = std::make_shared<const Entry>(std::move(added));
  if (HasWindow(date)) {
    Add(window_.entries, entry);
    if (window_.entries.count > kMostEntries) window_.epoch = -1;
  }
  if (IsExpected(date)) Add(expected_.entries, entry);
  if (storage_->UnsentRows(Table()) > 0) Add(unsent_, entry);
}

}  // namespace varnlog::dao
