#include <algorithm>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

[[noreturn]] void ThrowServersOwn() {
  throw EngineError(
      ErrorNumber::kServersOwn,
      "Copies of a log on a server are made on the server, or with 'varnlogctl server export'.");
}

// "CREATE TRIGGER name ..." of a rule.
std::string_view NameOf(std::string_view rule) {
  constexpr std::string_view kBegin = "CREATE TRIGGER ";
  if (rule.starts_with(kBegin)) rule.remove_prefix(kBegin.size());
  return rule.substr(0, rule.find(' '));
}

// What is not empty in each row.
std::vector<std::string> Joined(const ServerResult& rows) {
  std::vector<std::string> lines(static_cast<std::size_t>(rows.RowCount()));
  for (int row = 0; row < rows.RowCount(); ++row)
    for (int column = 0; column < rows.ColumnCount(); ++column) {
      std::string& line = lines[static_cast<std::size_t>(row)];
      if (rows.Text(row, column).empty()) continue;
      if (!line.empty()) line += ", ";
      line += rows.Text(row, column);
    }
  return lines;
}

}  // namespace

// The rules of a log on a server are those of its owner, which only he can take away: what is looked at is
// whether one of each name is there and at work.
bool ServerStorage::HasRules(std::span<const std::string> rules) {
  const ServerResult found =
      Run("SELECT tgname FROM pg_trigger t JOIN pg_class c ON c.oid = t.tgrelid "
          "WHERE c.relnamespace = current_schema()::regnamespace AND NOT tgisinternal "
          "GROUP BY tgname HAVING bool_and(tgenabled IN ('O', 'A'))");
  return std::ranges::all_of(rules, [&found](const std::string& rule) {
    for (int row = 0; row < found.RowCount(); ++row)
      if (found.Text(row, 0) == NameOf(rule)) return true;
    return false;
  });
}

void ServerStorage::SetRules(std::span<const std::string> /*rules*/) {
  throw EngineError(
      ErrorNumber::kRuleViolated,
      "Rules of the log on the server were removed or switched off; its owner puts them back with "
      "'varnlogctl server init'.");
}

std::vector<std::string> ServerStorage::Check() {
  std::vector<std::string> findings;
  const ServerResult order =
      Run("SELECT collversion, pg_collation_actual_version(oid) FROM pg_collation "
          "WHERE collnamespace = current_schema()::regnamespace AND collname = 'jet'");
  if (order.RowCount() == 0)
    findings.emplace_back("the order of texts (collation jet) is missing");
  else if (order.Text(0, 0) != order.Text(0, 1))
    findings.push_back("the server's order of texts is of version " + std::string(order.Text(0, 1)) +
                       ", the log's indexes were made with " + std::string(order.Text(0, 0)) +
                       ": REINDEX SCHEMA and ALTER COLLATION jet REFRESH VERSION");
  const ServerResult invalid =
      Run("SELECT i.relname FROM pg_index x JOIN pg_class i ON i.oid = x.indexrelid "
          "WHERE i.relnamespace = current_schema()::regnamespace AND NOT (x.indisvalid AND x.indisready)");
  for (int row = 0; row < invalid.RowCount(); ++row)
    findings.push_back("the index " + std::string(invalid.Text(row, 0)) + " cannot be used");
  // Reads every value of every row, as a copy would.
  for (const std::string& name : TableNames()) {
    try {
      const std::string table = QuoteIdentifier(name);
      static_cast<void>(RunOnce("SELECT sum(length(t::text)) FROM " + table + " AS t WHERE t IS NOT NULL"));
    } catch (const EngineError& error) {
      if (error.number() != ErrorNumber::kDamaged) throw;
      findings.emplace_back(error.what());
    }
  }
  return findings;
}

void ServerStorage::CopyTo(const std::string& /*target*/, const MaintenanceProgress& /*progress*/) {
  ThrowServersOwn();
}

std::string ServerStorage::CopyInto(const std::string& /*existing*/,
                                    const MaintenanceProgress& /*progress*/) {
  ThrowServersOwn();
}

std::optional<ServerState> ServerStorage::Server() {
  const ServerResult facts = Run(
      "SELECT current_setting('server_version'), current_database(), current_user, pg_is_in_recovery()::int, "
      "(SELECT coalesce(sum(pg_total_relation_size(oid)), 0) FROM pg_class "
      "WHERE relnamespace = current_schema()::regnamespace AND relkind = 'r'), "
      "(SELECT pg_has_role(relowner, 'USAGE')::int FROM pg_class WHERE oid = 'varnlog_state'::regclass), "
      "(SELECT collversion FROM pg_collation WHERE collnamespace = current_schema()::regnamespace "
      "AND collname = 'jet')");
  ServerState state;
  state.version = facts.Text(0, 0);
  state.database = facts.Text(0, 1);
  state.account = facts.Text(0, 2);
  state.isStandby = facts.Number(0, 3) != 0;
  state.bytes = facts.Number(0, 4);
  state.isOwner = facts.Number(0, 5) != 0;
  state.textOrder = facts.Text(0, 6);
  state.schema = link_.schema;
  state.host = session_->Host();
  state.encryption = session_->Encryption();
  state.connected = Joined(
      Run("SELECT usename, application_name, coalesce(host(client_addr), '') FROM pg_stat_activity "
          "WHERE datname = current_database() AND application_name <> '' AND backend_type = 'client backend' "
          "ORDER BY backend_start"));
  state.replicas =
      Joined(Run("SELECT application_name, coalesce(host(client_addr), ''), coalesce(state, '') FROM "
                 "pg_stat_replication"));
  return state;
}

}  // namespace varnlog::dao
