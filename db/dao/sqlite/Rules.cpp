#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

namespace {

std::vector<std::string> StoredRules(Connection& connection, const char* column) {
  Statement triggers(connection,
                     std::string("SELECT ") + column + " FROM sqlite_schema WHERE type = 'trigger'");
  std::vector<std::string> rules;
  while (triggers.Step()) rules.emplace_back(triggers.Text(0));
  return rules;
}

}  // namespace

bool FileStorage::AreRulesObeyed() {
  int obeyed = 0;
  sqlite3_db_config(file_.Handle(), SQLITE_DBCONFIG_ENABLE_TRIGGER, -1, &obeyed);
  return obeyed != 0;
}

void FileStorage::SetRulesObeyed(bool obeyed) {
  sqlite3_db_config(file_.Handle(), SQLITE_DBCONFIG_ENABLE_TRIGGER, obeyed ? 1 : 0, nullptr);
}

bool FileStorage::HasRules(std::span<const std::string> rules) {
  const std::vector<std::string> stored = StoredRules(file_, "sql");
  return std::is_permutation(stored.begin(), stored.end(), rules.begin(), rules.end());
}

void FileStorage::SetRules(std::span<const std::string> rules) {
  WriteScope scope(*this);
  for (const std::string& name : StoredRules(file_, "name"))
    file_.Execute("DROP TRIGGER " + QuoteIdentifier(name));
  for (const std::string& rule : rules) file_.Execute(rule);
  scope.Commit();
}

}  // namespace varnlog::dao
