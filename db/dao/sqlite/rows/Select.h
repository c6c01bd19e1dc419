#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "db/dao/sql/ResolvedSelect.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

class FileStorage;

/// The values that were lifted out of a statement's text, in the order of their parameters ?1, ?2, ...
using Parameters = std::vector<std::string>;

/// A translated statement of one connection, whose condition holds ?1, ?2, ... for the lifted texts.
/// Statements that differ only in the texts they compare with share one. None of its prepared statements is
/// left in the middle.
struct Select : ResolvedSelect {
  using ResolvedSelect::ResolvedSelect;
  std::size_t parameterCount = 0;

  /// Prepared on first use and kept; the key is its storage SQL.
  Statement& Prepared(Connection& connection, const std::string& storageSql);
  /// The statement of a snapshot, which is looked up oftenest.
  Statement snapshot;
  /// The same for a DISTINCT over the different combinations of its fields, which stand in a database in
  /// memory.
  std::shared_ptr<Connection> combinations;
  Statement distinctSnapshot;

 private:
  std::map<std::string, Statement> statements_;
};

void BindParameters(Statement& statement, const Parameters& parameters);

/// The statements a connection has translated, the latest used first. The number is bounded.
class SelectCache {
 public:
  /// A SELECT statement in the engine's SQL; throws as Database::OpenRecordset() says.
  [[nodiscard]] std::shared_ptr<Select> Find(FileStorage& storage, std::string_view jetSql,
                                             Parameters& parameters);
  /// All rows and fields of a table.
  [[nodiscard]] static std::shared_ptr<Select> WholeTable(FileStorage& storage, std::string_view table);

 private:
  struct Entry {
    std::string shape;
    std::shared_ptr<Select> select;
  };

  void Keep(std::string shape, std::shared_ptr<Select> select);

  std::list<Entry> entries_;
  std::unordered_map<std::string_view, std::list<Entry>::iterator> byShape_;
  std::string shape_;
};

}  // namespace varnlog::dao
