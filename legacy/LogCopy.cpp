#include "legacy/LogCopy.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "db/dao/BulkRows.h"
#include "platform/CodePage.h"

namespace varnlog::legacy {

// The exposure table of a new log, whose fields may stand in another order than core::ExposureFields().
class LogRows {
 public:
  explicit LogRows(dao::Database& target)
      : fields_(target.TableDefs(core::kExposureTable).Fields()),
        rows_(target.OpenBulkRows(core::kExposureTable)),
        changed_(fields_.size()) {
    const auto columns = core::ExposureFields();
    isSameOrder_ = fields_.size() == columns.size();
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      const auto column = std::find_if(columns.begin(), columns.end(), [&](const core::LogField& each) {
        return SameName(each.name, fields_[i].name);
      });
      columns_.push_back(column == columns.end() ? -1 : static_cast<int>(column - columns.begin()));
      isSameOrder_ = isSameOrder_ && columns_.back() == static_cast<int>(i);
    }
  }

  [[nodiscard]] dao::BulkRows& Bulk() { return *rows_; }

  // An old row in the form in which the new log keeps it: nearly always the row itself.
  [[nodiscard]] std::span<const Value> Form(const JetRow& row, std::int64_t id) {
    const auto* ownId = std::get_if<std::int64_t>(&row.values[0]);
    if (isSameOrder_ && ownId != nullptr && *ownId == id && Fits(row)) return row.values;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      if (columns_[i] < 0) continue;
      changed_[i] = row.values[static_cast<std::size_t>(columns_[i])];
      Cut(changed_[i], static_cast<std::size_t>(fields_[i].size));
      if (columns_[i] == 0) changed_[i] = id;
    }
    return changed_;
  }

  // False when there is a row of that id.
  [[nodiscard]] bool Insert(const JetRow& row, std::int64_t id) {
    try {
      rows_->Insert(Form(row, id));
      return true;
    } catch (const dao::EngineError& error) {
      if (error.number() != dao::ErrorNumber::kDuplicateKey) throw;
      return false;
    }
  }

  // The name of the first field that differs, or "" when none does.
  [[nodiscard]] std::string FindDifference(const JetRow& row, std::int64_t id) {
    const int field = rows_->FindDifference(id, Form(row, id));
    if (field == dao::BulkRows::kEqual) return {};
    return field == dao::BulkRows::kMissing ? "row" : fields_[static_cast<std::size_t>(field)].name;
  }

  [[nodiscard]] std::int64_t FieldCount() const { return static_cast<std::int64_t>(fields_.size()); }

 private:
  [[nodiscard]] bool Fits(const JetRow& row) const {
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      const auto* text = std::get_if<std::string>(&row.values[i]);
      const auto most = static_cast<std::size_t>(fields_[i].size);
      if (text != nullptr && text->size() > most && platform::CharacterCount(*text) > most) return false;
    }
    return true;
  }

  static void Cut(Value& value, std::size_t most) {
    auto* text = std::get_if<std::string>(&value);
    if (text == nullptr || most == 0 || text->size() <= most) return;
    text->resize(platform::FirstCharacters(*text, most).size());
  }

  std::vector<dao::FieldDef> fields_;
  std::unique_ptr<dao::BulkRows> rows_;
  std::vector<int> columns_;  // which of core::ExposureFields() each field is, -1 for none
  bool isSameOrder_ = false;
  std::vector<Value> changed_;
};

namespace {

const std::string* Text(const Value& value) {
  return std::get_if<std::string>(&value);
}

// Among the first `count` settings.
bool HasKey(const std::vector<std::pair<Value, Value>>& settings, std::size_t count, std::string_view key) {
  return std::any_of(settings.begin(), settings.begin() + static_cast<std::ptrdiff_t>(count),
                     [&](const auto& setting) { return SameName(*Text(setting.first), key); });
}

std::vector<std::pair<Value, Value>> StoredSettings(dao::Database& target) {
  std::vector<std::pair<Value, Value>> settings;
  const auto table = target.OpenRecordset(core::kConfigTable, dao::RecordsetType::kSnapshot);
  for (; !table->IsEOF(); table->MoveNext()) {
    settings.emplace_back(table->Fields("tCfgSKey").Value(), table->Fields("tCfgSSet").Value());
  }
  return settings;
}

}  // namespace

LogCopy::LogCopy(const OldLog& source, std::string origin) : source_(source), origin_(std::move(origin)) {}

bool LogCopy::Fill(dao::Database& target, const RowProgress& progress) {
  FillSettings(target);
  LogRows rows(target);
  rows.Bulk().SuspendIndexes();
  FaultList ignored;  // whoever converts has examined the log and knows them
  std::int64_t ordinal = 0;
  bool isWanted = true;
  const auto add = [&](const JetRow& row) {
    const auto* id = std::get_if<std::int64_t>(&row.values[0]);
    if (id == nullptr || !rows.Insert(row, *id)) newIds_.emplace(ordinal, 0);
    if (id != nullptr) highestId_ = std::max(highestId_, *id);
    isWanted = ++ordinal % kRowsPerReport != 0 || progress(ordinal);
    return isWanted;
  };
  source_.ReadExposures(add, ignored);
  if (!isWanted) return false;
  rows_ = ordinal;
  // More ids than there can be rows were never given.
  const bool isPlausible = source_.LastId() <= std::uint32_t{std::numeric_limits<std::int32_t>::max()};
  if (isPlausible) highestId_ = std::max<std::int64_t>(highestId_, source_.LastId());
  AddHomeless(source_, rows);
  rows.Bulk().SetLastId(highestId_);
  rows.Bulk().RestoreIndexes([&] { return progress(ordinal); });
  return true;
}

void LogCopy::AddHomeless(const OldLog& source, LogRows& rows) {
  if (newIds_.empty()) return;
  FaultList ignored;
  std::int64_t ordinal = 0;
  const auto add = [&](const JetRow& row) {
    if (const auto homeless = newIds_.find(ordinal++); homeless != newIds_.end()) {
      homeless->second = ++highestId_;
      static_cast<void>(rows.Insert(row, homeless->second));
    }
    return true;
  };
  source.ReadExposures(add, ignored);
}

std::int64_t LogCopy::IdOf(std::int64_t ordinal, const JetRow& row) const {
  const auto homeless = newIds_.find(ordinal);
  return homeless != newIds_.end() ? homeless->second : std::get<std::int64_t>(row.values[0]);
}

bool LogCopy::Compare(const OldLog& reread, dao::Database& target, const RowProgress& progress) {
  CompareSettings(reread, target);
  LogRows rows(target);
  FaultList ignored;
  std::int64_t ordinal = 0;
  bool isWanted = true;
  const auto compare = [&](const JetRow& row) {
    const std::int64_t id = IdOf(ordinal++, row);
    const std::string field = rows.FindDifference(row, id);
    compared_ += rows.FieldCount();
    if (!field.empty()) Differ(field + " of the exposure " + std::to_string(id));
    isWanted = ordinal % kRowsPerReport != 0 || progress(ordinal);
    return isWanted && difference_.empty();
  };
  reread.ReadExposures(compare, ignored);
  const std::int64_t found = target.OpenRecordset(core::kExposureTable)->RecordCount();
  if (isWanted && (ordinal != rows_ || found != rows_)) Differ("the number of exposures");
  return isWanted;
}

// Version and origin are the new log's own; everything else is the old log's, and where that has nothing, the
// template's.
std::vector<LogCopy::Setting> LogCopy::Settings(const OldLog& source) const {
  std::vector<Setting> settings{{std::string(core::kVersionKey), std::string(core::kLogVersion)},
                                {std::string(kOriginKey), origin_}};
  const auto addAll = [&settings](const std::vector<Setting>& more) {
    const auto known = settings.size();
    for (const Setting& setting : more) {
      if (Text(setting.first) == nullptr || HasKey(settings, known, *Text(setting.first))) continue;
      settings.push_back(setting);
    }
  };
  addAll(source.Settings());
  addAll(templateSettings_);
  return settings;
}

void LogCopy::FillSettings(dao::Database& target) {
  templateSettings_ = StoredSettings(target);
  target.Execute("DELETE FROM TConfig");
  const auto rows = target.OpenBulkRows(core::kConfigTable);
  for (const auto& [key, value] : Settings(source_)) rows->Insert(std::vector<Value>{key, value});
}

void LogCopy::CompareSettings(const OldLog& reread, dao::Database& target) {
  const auto stored = StoredSettings(target);
  const auto expected = Settings(reread);
  const bool isSame = std::is_permutation(stored.begin(), stored.end(), expected.begin(), expected.end());
  if (!isSame) Differ("the settings");
  compared_ += static_cast<std::int64_t>(2 * expected.size());
}

void LogCopy::Differ(std::string what) {
  if (difference_.empty()) difference_ = std::move(what);
}

}  // namespace varnlog::legacy
