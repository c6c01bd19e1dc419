#include "db/dao/postgres/ServerRowWriter.h"

#include <algorithm>

#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/postgres/ServerText.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/text/Collation.h"

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

std::string Literal(const CellView& value) {
  if (value.kind == CellKind::kNull) return "NULL";
  if (value.kind != CellKind::kText) {
    std::string number;
    AppendCopyValue(number, value);
    return number;
  }
  return QuoteText(ToServer(value.text));
}

std::string TableFieldList(const TableSchema& table) {
  std::string list;
  for (const FieldDef& field : table.fields) list += (list.empty() ? "" : ", ") + QuoteIdentifier(field.name);
  return list;
}

}  // namespace

ServerRowWriter::ServerRowWriter(std::shared_ptr<ServerStorage> storage,
                                 std::shared_ptr<const TableSchema> table, std::vector<std::size_t> ordinals)
    : RowWriter(storage, table, ordinals),
      storage_(storage),
      hasCounter_(std::ranges::any_of(Table().fields, &FieldDef::isCounter)),
      known_(std::move(storage), std::move(table), ordinals) {
  for (std::size_t field = 0; field < Table().fields.size(); ++field) {
    const auto at = std::ranges::find(ordinals, field);
    if (at != ordinals.end()) places_.push_back(static_cast<std::size_t>(at - ordinals.begin()));
  }
}

std::shared_ptr<const RowSet> ServerRowWriter::Read(std::int64_t rowId) {
  if (auto row = known_.Find(rowId)) return row;
  const NumberText id(rowId);
  const std::string sql = "SELECT " + FieldList() + " FROM " + QuoteIdentifier(Table().name) + " WHERE " +
                          QuoteIdentifier(ServerStorage::KeyField(Table())) + " = $1::integer";
  const ServerResult found = storage_->IsToBeWritten(Table(), rowId) ? storage_->Run(sql, {id.View()})
                                                                     : storage_->RunAhead(sql, {id.View()});
  auto row = std::make_shared<RowSet>(FieldCount());
  if (found.RowCount() == 0)
    row->AppendDeleted();
  else
    row->Append([&](std::size_t column) { return found.Cell(0, static_cast<int>(column)); });
  known_.NoteRead(rowId, row);
  return row;
}

void ServerRowWriter::NoteRead(const ServerResult& read) {
  for (int each = 0; each < read.RowCount(); ++each) {
    const std::int64_t id = read.Number(each, 0);
    if (storage_->IsChangedLater(Table(), id)) continue;
    auto row = std::make_shared<RowSet>(FieldCount());
    row->Append([&](std::size_t column) { return read.Cell(each, static_cast<int>(column) + 1); });
    known_.NoteRead(id, std::move(row));
  }
}

std::int64_t ServerRowWriter::Insert(const CopyBuffer& buffer) {
  const TableSchema& table = Table();
  if (!hasCounter_ || places_.size() != table.fields.size()) return InsertAtOnce(buffer);
  const std::int64_t id = storage_->NextCounter(table);
  // A row of the history stands in one script with the change that it is about.
  const bool isInPart = storage_->InPart();
  const bool isInScript = isInPart || storage_->IsAddedByScript(table, id);
  line_.clear();
  for (std::size_t field = 0; field < table.fields.size(); ++field) {
    if (field > 0) line_ += isInScript ? ',' : '\t';
    const CellView value = buffer[places_[field]].View();
    if (table.fields[field].isCounter)
      line_ += std::to_string(id);
    else if (isInScript)
      line_ += Literal(value);
    else
      AppendCopyValue(line_, value);
  }
  const auto statement = [&] {
    return "INSERT INTO " + QuoteIdentifier(table.name) + " (" + TableFieldList(table) + ") VALUES (" +
           line_ + ")";
  };
  if (isInPart)
    storage_->WriteLater(table, id, statement());
  else if (isInScript)
    storage_->AddLaterByScript(table, id, statement());
  else
    AddByCopy(id);
  return id;
}

void ServerRowWriter::AddByCopy(std::int64_t id) {
  line_ += '\n';
  storage_->AddLater(Table(), line_);
  // Only an update comes back to what it has added.
  if (!storage_->AreRulesObeyed()) known_.NoteAdded(id, line_);
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
  storage_->NoteWritten(Table());
  const ServerResult added =
      storage_->Run("INSERT INTO " + QuoteIdentifier(Table().name) + " (" + fields + ") VALUES (" +
                        parameters + ") RETURNING " + QuoteIdentifier(key),
                    values);
  return added.Number(0, 0);
}

// Whether rows are still found where they were found before: by an index's fields.
void ServerRowWriter::NoteChange(const CopyBuffer& buffer, std::int64_t rowId, const RowSet* before) {
  bool moves = before == nullptr;
  for (std::size_t i = 0; i < buffer.size() && !moves; ++i) {
    if (!buffer[i].isChanged) continue;
    const CellView old = before->At(0, i);
    const CellView after = buffer[i].View();
    const bool isSame = old.kind == after.kind && (after.kind != CellKind::kText ||
                                                   Collation::Instance().Compare(old.text, after.text) == 0);
    moves = !isSame && std::ranges::any_of(Table().indexes, [&](const Index& index) {
      return std::ranges::any_of(index.fields,
                                 [&](const std::string& name) { return SameName(name, FieldAt(i).name); });
    });
  }
  if (moves) storage_->NoteMove();
  storage_->NoteChange(Table());
  known_.NoteChanged(rowId, before, buffer);
}

void ServerRowWriter::OverwriteLater(const CopyBuffer& buffer, std::int64_t rowId) {
  std::string settings;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i].isChanged)
      settings += (settings.empty() ? "" : ", ") + QuoteIdentifier(FieldAt(i).name) + " = " +
                  Literal(buffer[i].View());
  storage_->WriteLater(Table(), rowId,
                       "UPDATE " + QuoteIdentifier(Table().name) + " SET " + settings + " WHERE " +
                           QuoteIdentifier(ServerStorage::KeyField(Table())) + " = " + std::to_string(rowId));
}

bool ServerRowWriter::Overwrite(const CopyBuffer& buffer, std::int64_t rowId) {
  // Within the transaction the row is still there when it was there before.
  const auto known = known_.Find(rowId);
  const RowSet* const before = known == nullptr || known->IsDeleted(0) ? nullptr : known.get();
  const bool isLater = storage_->InPart() && before != nullptr;
  NoteChange(buffer, rowId, before);
  if (isLater) {
    OverwriteLater(buffer, rowId);
    return true;
  }
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
  return storage_
             ->Run("UPDATE " + QuoteIdentifier(Table().name) + " SET " + settings + " WHERE " +
                       QuoteIdentifier(ServerStorage::KeyField(Table())) + " = $" +
                       std::to_string(values.size()) + "::integer",
                   values)
             .Changed() > 0;
}

}  // namespace varnlog::dao
