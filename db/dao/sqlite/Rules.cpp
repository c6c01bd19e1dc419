#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <sqlite3.h>

#include "db/dao/DBEngine.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

namespace {

std::vector<std::string> StoredRules(Connection& connection, const char* column) {
  Statement triggers(connection,
                     std::string("SELECT ") + column + " FROM sqlite_schema WHERE type = 'trigger'");
  std::vector<std::string> rules;
  while (triggers.Step()) rules.emplace_back(triggers.Text(0));
  return rules;
}

void SetObeyed(Connection& connection, bool obeyed) {
  sqlite3_db_config(connection.Handle(), SQLITE_DBCONFIG_ENABLE_TRIGGER, obeyed ? 1 : 0, nullptr);
}

bool AreObeyed(Connection& connection) {
  int obeyed = 0;
  sqlite3_db_config(connection.Handle(), SQLITE_DBCONFIG_ENABLE_TRIGGER, -1, &obeyed);
  return obeyed != 0;
}

}  // namespace

RulesSuspension::RulesSuspension(std::shared_ptr<Connection> connection)
    : connection_(std::move(connection)), wereObeyed_(AreObeyed(*connection_)) {
  if (wereObeyed_) SetObeyed(*connection_, false);
}

RulesSuspension::~RulesSuspension() {
  if (wereObeyed_ && connection_->IsOpen()) SetObeyed(*connection_, true);
}

bool Database::HasRules(std::span<const std::string> rules) {
  const std::vector<std::string> stored = StoredRules(*connection_, "sql");
  return std::is_permutation(stored.begin(), stored.end(), rules.begin(), rules.end());
}

void Database::SetRules(std::span<const std::string> rules) {
  WriteScope scope(*connection_);
  for (const std::string& name : StoredRules(*connection_, "name"))
    connection_->Execute("DROP TRIGGER " + QuoteIdentifier(name));
  for (const std::string& rule : rules) connection_->Execute(rule);
  scope.Commit();
}

// Only what was compared with rules of the program's own is let run.
bool Database::ObeyRules(std::span<const std::string> rules) {
  if (!HasRules(rules)) return false;
  SetObeyed(*connection_, true);
  return true;
}

}  // namespace varnlog::dao
