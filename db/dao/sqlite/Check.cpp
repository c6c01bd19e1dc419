#include "db/dao/sqlite/Check.h"

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/TableSalvage.h"

namespace varnlog::dao {

namespace {

// True where the value cannot have come from a field of this type.
std::string WrongValue(const FieldDef& field) {
  const std::string name = QuoteIdentifier(field.name);
  switch (field.type) {
    case FieldType::kBoolean:
      return name + " NOT IN (0, 1)";
    case FieldType::kLong:
      return "typeof(" + name + ") NOT IN ('integer', 'null')";
    case FieldType::kDouble:
      return "typeof(" + name + ") NOT IN ('integer', 'real', 'null')";
    case FieldType::kDate:
      return name + " IS NOT strftime('%Y-%m-%d %H:%M:%S', " + name + ")";
    case FieldType::kText:
      return "typeof(" + name + ") NOT IN ('text', 'null') OR length(" + name + ") > " +
             std::to_string(field.size);
    case FieldType::kMemo:
      break;
  }
  return "typeof(" + name + ") NOT IN ('text', 'null')";
}

void CheckPages(Connection& connection, std::vector<std::string>& findings) {
  Statement check(connection, "PRAGMA integrity_check");
  while (check.Step())
    if (check.Text(0) != "ok") findings.emplace_back(check.Text(0));
}

void CheckValues(Connection& connection, const TableSchema& table, std::vector<std::string>& findings) {
  std::string sums;
  for (const FieldDef& field : table.fields)
    sums += (sums.empty() ? "" : ", ") + ("total(" + WrongValue(field) + ")");
  Statement count(connection, "SELECT " + sums + " FROM " + QuoteIdentifier(table.name));
  ResetAtEnd reset(count);
  if (!count.Step()) return;
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    const std::int64_t wrong = count.Number(static_cast<int>(i));
    if (wrong > 0)
      findings.push_back("table " + table.name + ", field " + table.fields[i].name + ": " +
                         std::to_string(wrong) + " values that the field cannot hold");
  }
}

// A damaged page can end the check itself; what else is wrong cannot be told then.
template <typename Run>
std::vector<std::string> Collect(const Run& run) {
  std::vector<std::string> findings;
  try {
    run(findings);
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    findings.emplace_back(error.what());
  }
  return findings;
}

}  // namespace

std::vector<std::string> CheckStructure(Connection& connection) {
  return Collect([&](auto& findings) { CheckPages(connection, findings); });
}

std::vector<std::string> CheckFile(Connection& connection) {
  return Collect([&](auto& findings) {
    ReadScope scope(connection);
    CheckPages(connection, findings);
    for (const std::string& name : ReadTableNames(connection))
      CheckValues(connection, ReadTableSchema(connection, name), findings);
  });
}

}  // namespace varnlog::dao
