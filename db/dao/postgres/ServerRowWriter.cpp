#include "db/dao/postgres/ServerRowWriter.h"

#include <algorithm>

#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

// A value as a parameter; numbers need a text of their own, which `numbers` keeps.
std::optional<std::string_view> Parameter(const CopyBuffer::Cell& cell, std::vector<std::string>& numbers) {
  if (cell.kind == CellKind::kText) return cell.text;
  if (cell.kind != CellKind::kInteger && cell.kind != CellKind::kReal) return std::nullopt;
  numbers.emplace_back();
  AppendCopyValue(numbers.back(), cell.View());
  return numbers.back();
}

}  // namespace

ServerRowWriter::ServerRowWriter(std::shared_ptr<ServerStorage> storage,
                                 std::shared_ptr<const TableSchema> table, std::vector<std::size_t> ordinals)
    : RowWriter(storage, std::move(table), ordinals),
      storage_(std::move(storage)),
      ordinals_(std::move(ordinals)) {}

std::shared_ptr<const RowSet> ServerRowWriter::Read(std::int64_t rowId) {
  const NumberText id(rowId);
  const ServerResult found =
      storage_->Run("SELECT " + FieldList() + " FROM " + QuoteIdentifier(Table().name) + " WHERE " +
                        QuoteIdentifier(ServerStorage::KeyField(Table())) + " = $1::integer",
                    {id.View()});
  auto row = std::make_shared<RowSet>(FieldCount());
  if (found.RowCount() == 0)
    row->AppendDeleted();
  else
    row->Append([&](std::size_t column) { return found.Cell(0, static_cast<int>(column)); });
  return row;
}

std::int64_t ServerRowWriter::Insert(const CopyBuffer& buffer) {
  const TableSchema& table = Table();
  const bool hasCounter =
      std::ranges::any_of(table.fields, [](const FieldDef& field) { return field.isCounter; });
  if (!hasCounter || buffer.size() != table.fields.size()) return InsertAtOnce(buffer);
  const std::int64_t id = storage_->NextCounter(table);
  line_.clear();
  for (std::size_t field = 0; field < table.fields.size(); ++field) {
    if (field > 0) line_ += '\t';
    if (table.fields[field].isCounter) {
      line_ += std::to_string(id);
      continue;
    }
    const auto at = std::ranges::find(ordinals_, field) - ordinals_.begin();
    AppendCopyValue(line_, buffer[static_cast<std::size_t>(at)].View());
  }
  line_ += '\n';
  storage_->AddLater(table, line_);
  return id;
}

std::int64_t ServerRowWriter::InsertAtOnce(const CopyBuffer& buffer) {
  const std::string key = ServerStorage::KeyField(Table());
  std::vector<std::string> numbers;
  numbers.reserve(buffer.size() + 1);
  ServerValues values;
  std::string fields;
  std::string parameters;
  const auto add = [&](const std::string& field, std::optional<std::string_view> value) {
    values.push_back(value);
    fields += (fields.empty() ? "" : ", ") + QuoteIdentifier(field);
    parameters += (parameters.empty() ? "$" : ", $") + std::to_string(values.size());
  };
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (!FieldAt(i).isCounter) add(FieldAt(i).name, Parameter(buffer[i], numbers));
  if (Table().FieldAt(key)) {
    numbers.push_back(std::to_string(storage_->NextCounter(Table())));
    add(key, numbers.back());
  }
  const ServerResult added =
      storage_->Run("INSERT INTO " + QuoteIdentifier(Table().name) + " (" + fields + ") VALUES (" +
                        parameters + ") RETURNING " + QuoteIdentifier(key),
                    values);
  return added.Number(0, 0);
}

bool ServerRowWriter::Overwrite(const CopyBuffer& buffer, std::int64_t rowId) {
  std::vector<std::string> numbers;
  numbers.reserve(buffer.size() + 1);
  ServerValues values;
  std::string settings;
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    if (!buffer[i].isChanged) continue;
    values.push_back(Parameter(buffer[i], numbers));
    settings += (settings.empty() ? "" : ", ") + QuoteIdentifier(FieldAt(i).name) + " = $" +
                std::to_string(values.size());
  }
  const NumberText id(rowId);
  values.emplace_back(id.View());
  storage_->NoteChange();
  return storage_
             ->Run("UPDATE " + QuoteIdentifier(Table().name) + " SET " + settings + " WHERE " +
                       QuoteIdentifier(ServerStorage::KeyField(Table())) + " = $" +
                       std::to_string(values.size()) + "::integer",
                   values)
             .Changed() > 0;
}

}  // namespace varnlog::dao
