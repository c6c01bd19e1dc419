#include "db/dao/postgres/ServerSchema.h"

#include <array>
#include <charconv>

#include "db/dao/EngineError.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/postgres/ServerText.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

struct TypeName {
  std::string_view server;
  FieldType type;
  bool isCounter = false;
};

constexpr std::array kTypeNames = {TypeName{"jet_counter", FieldType::kLong, true},
                                   TypeName{"jet_yesno", FieldType::kBoolean},
                                   TypeName{"jet_date", FieldType::kDate},
                                   TypeName{"int4", FieldType::kLong},
                                   TypeName{"int8", FieldType::kLong},
                                   TypeName{"float8", FieldType::kDouble},
                                   TypeName{"varchar", FieldType::kText},
                                   TypeName{"text", FieldType::kMemo}};

/// What is not written as it is in a line of COPY.
constexpr std::string_view kCopySigns("\\\t\n\r\0\xF3", 6);

/// The server counts the length of a text with four bytes of its own.
constexpr int kLengthHeader = 4;

constexpr const char* kFieldsSql =
    "SELECT c.relname, a.attname, t.typname, a.atttypmod, a.attnum = ANY(p.partattrs) FROM pg_class c "
    "JOIN pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped "
    "JOIN pg_type t ON t.oid = a.atttypid LEFT JOIN pg_partitioned_table p ON p.partrelid = c.oid "
    "WHERE c.relnamespace = current_schema()::regnamespace AND c.relkind IN ('r', 'p') "
    "AND lower(c.relname) = lower($1) AND left(c.relname, 8) <> 'varnlog_' "
    "AND left(a.attname, 8) <> 'varnlog_' ORDER BY a.attnum";
constexpr const char* kIndexesSql =
    "SELECT i.relname, x.indisunique, obj_description(i.oid, 'pg_class') FROM pg_index x "
    "JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class c ON c.oid = x.indrelid "
    "WHERE c.relnamespace = current_schema()::regnamespace AND c.relname = $1 AND NOT x.indisprimary "
    "ORDER BY i.oid";

FieldDef FieldFrom(const ServerResult& rows, int row) {
  FieldDef field{.name = std::string(rows.Text(row, 1)), .type = FieldType::kMemo};
  for (const TypeName& each : kTypeNames)
    if (rows.Text(row, 2) == each.server) {
      field.type = each.type;
      field.isCounter = each.isCounter;
    }
  if (field.type == FieldType::kText) field.size = static_cast<int>(rows.Number(row, 3)) - kLengthHeader;
  return field;
}

std::vector<std::string> Names(std::string_view list) {
  std::vector<std::string> names;
  while (!list.empty()) {
    const std::size_t comma = std::min(list.find(", "), list.size());
    names.emplace_back(list.substr(0, comma));
    list.remove_prefix(std::min(comma + 2, list.size()));
  }
  return names;
}

// "seek: a, b; stored: b" or "grouped: a, b" in an index's comment.
void TakeIndex(TableSchema& table, std::string name, bool isUnique, std::string_view comment) {
  constexpr std::string_view kSeek = "seek: ";
  constexpr std::string_view kStored = "; stored: ";
  constexpr std::string_view kGrouped = "grouped: ";
  if (comment.starts_with(kGrouped)) table.groupedFields.push_back(Names(comment.substr(kGrouped.size())));
  const std::size_t stored = comment.find(kStored);
  if (!comment.starts_with(kSeek) || stored == std::string_view::npos) return;
  Index index{.name = std::move(name),
              .fields = Names(comment.substr(kSeek.size(), stored - kSeek.size())),
              .isPrimary = false,
              .isUnique = isUnique};
  for (const std::string& field : index.fields)
    if (!table.FieldAt(field)) return;
  table.firstStoredFields.emplace_back(comment.substr(stored + kStored.size()));
  table.indexes.push_back(std::move(index));
}

[[noreturn]] void RefuseDefinition() {
  throw EngineError(ErrorNumber::kNotSupported, "The layout of a log on a server is its owner's.");
}

}  // namespace

TableSchema ReadServerTable(ServerStorage& storage, std::string_view name,
                            std::optional<std::size_t>& yearField) {
  const ServerResult fields = storage.Run(kFieldsSql, {name});
  if (fields.RowCount() == 0)
    throw EngineError(ErrorNumber::kTableNotFound, "There is no table or query '" + std::string(name) + "'.");
  TableSchema table;
  table.name = fields.Text(0, 0);
  for (int row = 0; row < fields.RowCount(); ++row) {
    FieldDef field = FieldFrom(fields, row);
    table.defaults.emplace_back();
    if (fields.Text(row, 4) == "t") yearField = table.fields.size();
    if (field.type == FieldType::kBoolean) table.defaults.back() = false;
    if (field.isCounter) {
      table.firstStoredFields.push_back(field.name);
      table.indexes.push_back(
          {.name = "PrimaryKey", .fields = {field.name}, .isPrimary = true, .isUnique = true});
    }
    table.fields.push_back(std::move(field));
  }
  const ServerResult indexes = storage.Run(kIndexesSql, {std::string_view(table.name)});
  for (int row = 0; row < indexes.RowCount(); ++row)
    TakeIndex(table, std::string(indexes.Text(row, 0)), indexes.Text(row, 1) == "t", indexes.Text(row, 2));
  return table;
}

void AppendCopyValue(std::string& line, const CellView& value) {
  std::array<char, 32> digits;
  if (value.kind == CellKind::kInteger) {
    line.append(digits.data(), std::to_chars(digits.begin(), digits.end(), value.integer).ptr);
  } else if (value.kind == CellKind::kReal) {
    line.append(digits.data(), std::to_chars(digits.begin(), digits.end(), value.real).ptr);
  } else if (value.kind != CellKind::kText) {
    line += "\\N";
  } else if (value.text.find_first_of(kCopySigns) == std::string_view::npos) {
    line += value.text;
  } else {
    for (const char c : ToServer(value.text)) {
      const bool isSign = c == '\\' || c == '\t' || c == '\n' || c == '\r';
      if (isSign) line += '\\';
      line += c == '\t' ? 't' : c == '\n' ? 'n' : c == '\r' ? 'r' : c;
    }
  }
}

CellView CopyField::View() const {
  CellView view = value;
  view.text = text;
  return view;
}

CopyField TakeCopyField(std::string_view& line, FieldType type) {
  const std::string_view field = line.substr(0, line.find_first_of("\t\n"));
  line.remove_prefix(std::min(field.size() + 1, line.size()));
  CopyField taken;
  if (field == "\\N") return taken;
  if (type == FieldType::kLong || type == FieldType::kBoolean) {
    taken.value.kind = CellKind::kInteger;
    std::from_chars(field.data(), field.data() + field.size(), taken.value.integer);
  } else if (type == FieldType::kDouble) {
    taken.value.kind = CellKind::kReal;
    std::from_chars(field.data(), field.data() + field.size(), taken.value.real);
  } else {
    taken.value.kind = CellKind::kText;
    for (std::size_t i = 0; i < field.size(); ++i) {
      char c = field[i];
      if (c == '\\' && ++i < field.size())
        c = field[i] == 't' ? '\t' : field[i] == 'n' ? '\n' : field[i] == 'r' ? '\r' : field[i];
      taken.text += c;
    }
    if (HasZeroOnServer(taken.text)) taken.text = FromServer(taken.text);
  }
  return taken;
}

std::vector<std::string> ServerStorage::TableNames() {
  const ServerResult rows =
      Run("SELECT relname FROM pg_class WHERE relnamespace = current_schema()::regnamespace AND relkind IN "
          "('r', 'p') "
          "AND left(relname, 8) <> 'varnlog_' ORDER BY oid");
  std::vector<std::string> names;
  for (int row = 0; row < rows.RowCount(); ++row) names.emplace_back(rows.Text(row, 0));
  return names;
}

std::shared_ptr<const TableSchema> ServerStorage::Table(std::string_view name) {
  if (!isOpen_) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  std::string key = LowerName(name);
  const auto known = tables_.find(key);
  if (known != tables_.end()) return known->second;
  std::optional<std::size_t> yearField;
  auto table = std::make_shared<const TableSchema>(ReadServerTable(*this, name, yearField));
  if (yearField) yearFields_[table->name] = *yearField;
  tables_.emplace(std::move(key), table);
  return table;
}

void ServerStorage::AppendTable(std::string_view /*name*/, std::span<const FieldDef> /*fields*/) {
  RefuseDefinition();
}

void ServerStorage::AppendIndex(std::string_view /*table*/, const Index& /*index*/) {
  RefuseDefinition();
}

void ServerStorage::AppendField(std::string_view /*table*/, const FieldDef& /*field*/) {
  if (!isOpen_) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  RequireWritable();
  RefuseDefinition();
}

std::map<std::string, std::int64_t> StateFrom(const ServerResult& rows) {
  std::map<std::string, std::int64_t> state;
  for (int row = 0; row < rows.RowCount(); ++row) state[std::string(rows.Text(row, 0))] = rows.Number(row, 1);
  return state;
}

}  // namespace varnlog::dao
