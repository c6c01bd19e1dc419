#include "db/dao/postgres/ServerTable.h"

#include <algorithm>
#include <charconv>
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

std::optional<std::int64_t> ServerTable::IdBehind(std::int64_t id) {
  const NumberText from(id);
  const ServerResult found = storage_->Run(
      "SELECT min(" + key_ + ") FROM " + name_ + " WHERE " + key_ + " > $1::integer", {from.View()});
  if (found.IsNull(0, 0)) return std::nullopt;
  return found.Number(0, 0);
}

std::int64_t ServerTable::RecordCount() const {
  return storage_->Run("SELECT count(*) FROM " + name_).Number(0, 0);
}

void ServerTable::UseIndex(const Index& index) {
  if (!unsent_.empty()) storage_->SendAdded();
  unsent_.clear();
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
    const bool fits = isNumber ? IsNumber(texts[i]) : texts[i].find('\0') == std::string::npos;
    if (!fits) return std::nullopt;
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

// Nobody else can add rows or change them.
bool ServerTable::SeesAll() const {
  return dateKey_ && storage_->InWork() && !storage_->IsReadOnly();
}

// In the order of time the window does it.
void ServerTable::Expect(std::span<const platform::DateTime> dates) {
  if (!SeesAll() || std::ranges::is_sorted(dates)) return;
  if (std::ranges::all_of(dates, [this](platform::DateTime date) { return HasWindow(date.ToIso()); })) return;
  SettleUnsent();
  expected_ = {.rows = {}, .epoch = storage_->Epoch(), .changes = storage_->Moves()};
  std::string list = "{";
  for (const platform::DateTime& date : dates)
    if (const auto [at, isNew] = expected_.rows.try_emplace(date.ToIso()); isNew)
      list += (list.size() == 1 ? "\"" : ",\"") + at->first + '"';
  list += '}';
  const std::string dateField = QuoteIdentifier(index_->fields[*dateKey_]);
  std::string columns = key_;
  for (const std::string& field : index_->fields) columns += ", " + QuoteIdentifier(field);
  const ServerResult found =
      RunForSeek("SELECT " + columns + " FROM " + name_ + " WHERE " + dateField + " = ANY($1::text[])",
                 {std::string_view(list)});
  for (int row = 0; row < found.RowCount(); ++row) {
    const SharedEntry entry = EntryAt(found, row);
    expected_.rows[DateOf(entry)].push_back(entry);
  }
  for (const auto& [date, entry] : unsent_)
    if (std::vector<SharedEntry>* const rows = ExpectedAt(date)) rows->push_back(entry);
}

std::vector<ServerTable::SharedEntry>* ServerTable::ExpectedAt(const std::string& date) {
  if (expected_.epoch != storage_->Epoch() || expected_.changes != storage_->Moves()) return nullptr;
  const auto at = expected_.rows.find(date);
  return at == expected_.rows.end() ? nullptr : &at->second;
}

std::optional<std::int64_t> ServerTable::Oldest(std::span<const SharedEntry> entries,
                                                std::span<const SeekKey> keys) const {
  std::optional<std::int64_t> oldest;
  for (const SharedEntry& entry : entries)
    if ((!oldest || entry->id < *oldest) && Fits(*entry, keys)) oldest = entry->id;
  return oldest;
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
  const std::string dateField = QuoteIdentifier(index_->fields[*dateKey_]);
  std::string columns = key_;
  for (const std::string& field : index_->fields) columns += ", " + QuoteIdentifier(field);
  const ServerResult found =
      storage_->Run("SELECT " + columns + " FROM " + name_ + " WHERE " + dateField + " >= $1 ORDER BY " +
                        dateField + " NULLS FIRST, " + key_ + " LIMIT " + std::to_string(windowRows_),
                    {std::string_view(date)});
  window_ = {.first = date,
             .last = kForEver,
             .entries = {},
             .epoch = storage_->Epoch(),
             .changes = storage_->Moves()};
  for (int row = 0; row < found.RowCount(); ++row) {
    window_.entries.push_back(EntryAt(found, row));
  }
  if (window_.entries.size() < windowRows_) {
    for (const auto& [unsentDate, entry] : unsent_)
      if (unsentDate >= date) AddToWindow(entry);
    return true;
  }
  // Of the last date some rows may be missing.
  const std::string last = DateOf(window_.entries.back());
  std::erase_if(window_.entries, [&](const SharedEntry& entry) { return DateOf(entry) == last; });
  if (window_.entries.empty()) {
    window_.epoch = -1;
    return false;
  }
  window_.last = DateOf(window_.entries.back());
  for (const auto& [unsentDate, entry] : unsent_)
    if (HasWindow(unsentDate)) AddToWindow(entry);
  return true;
}

bool ServerTable::Fits(const Entry& entry, std::span<const SeekKey> keys) const {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto& value = entry.values[i];
    const std::string wanted = TextOf(keys[i]);
    const bool isSame =
        value && (IsText(i) ? Collation::Instance().Compare(*value, wanted) == 0 : *value == wanted);
    if (!isSame) return false;
  }
  return true;
}

std::optional<std::int64_t> ServerTable::FindInWindow(std::span<const SeekKey> keys,
                                                      const std::string& date) const {
  // Fresh rows come in the order of time: behind all that are there.
  if (window_.entries.empty() || date > DateOf(window_.entries.back())) return std::nullopt;
  const auto dateOf = [this](const SharedEntry& entry) -> const std::string& { return DateOf(entry); };
  return Oldest(std::ranges::equal_range(window_.entries, date, {}, dateOf), keys);
}

std::optional<std::int64_t> ServerTable::FindUnsent(std::span<const SeekKey> keys,
                                                    const std::string& date) const {
  const auto [begin, end] = unsent_.equal_range(date);
  std::optional<std::int64_t> oldest;
  for (auto row = begin; row != end; ++row)
    if ((!oldest || row->second->id < *oldest) && Fits(*row->second, keys)) oldest = row->second->id;
  return oldest;
}

void ServerTable::SettleUnsent() {
  const bool isOver = std::exchange(unsentEpoch_, storage_->Epoch()) != storage_->Epoch();
  if (isOver || storage_->UnsentRows(Table()) == 0) unsent_.clear();
}

// Ahead of rows that are not sent yet only when all of them are known here.
ServerResult ServerTable::RunForSeek(const std::string& sql, const ServerValues& values) {
  const bool allAreKnown = storage_->UnsentRows(Table()) == static_cast<std::int64_t>(unsent_.size());
  if (allAreKnown && storage_->InWork()) return storage_->RunAhead(sql, values);
  ServerResult found = storage_->Run(sql, values);
  unsent_.clear();
  return found;
}

std::optional<std::int64_t> ServerTable::Find(std::span<const SeekKey> keys) {
  const bool hasDate = dateKey_ && keys.size() > *dateKey_;
  const auto* const wanted = hasDate ? std::get_if<platform::DateTime>(&keys[*dateKey_]) : nullptr;
  if (wanted == nullptr || !storage_->InWork() || storage_->IsReadOnly()) {
    storage_->SendAdded();
    unsent_.clear();
    return Ask(keys);
  }
  SettleUnsent();
  const std::string date = wanted->ToIso();
  if (HasWindow(date)) {
    ++hits_;
    return FindInWindow(keys, date);
  }
  if (const std::vector<SharedEntry>* const rows = ExpectedAt(date)) return Oldest(*rows, keys);
  // Only what comes in the order of time is likely to go on within a window.
  const bool goesOn = date > std::exchange(sought_, date);
  if (goesOn && ReadWindow(date)) return FindInWindow(keys, date);
  // What is not sent yet is younger than all that is there.
  const auto there = Ask(keys);
  return there ? there : FindUnsent(keys, date);
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
  if (HasWindow(date)) AddToWindow(entry);
  if (std::vector<SharedEntry>* const rows = ExpectedAt(date)) rows->push_back(entry);
  if (storage_->UnsentRows(Table()) > 0) unsent_.emplace(date, entry);
}

void ServerTable::AddToWindow(const SharedEntry& entry) {
  if (window_.entries.size() >= kMostEntries) {
    window_.epoch = -1;
    return;
  }
  const auto dateOf = [this](const SharedEntry& each) -> const std::string& { return DateOf(each); };
  window_.entries.insert(std::ranges::upper_bound(window_.entries, DateOf(entry), {}, dateOf), entry);
}

}  // namespace varnlog::dao
