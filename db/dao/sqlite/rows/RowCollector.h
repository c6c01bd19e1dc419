#pragma once

#include <string>

struct sqlite3;
struct sqlite3_value;

namespace varnlog::dao {

class Connection;
class Statement;

/// Takes the rows of a scan from inside the storage's own loop. Handing a million rows out one by one takes
/// longer than reading them.
class RowCollector {
 public:
  virtual ~RowCollector() = default;
  /// The columns of one row; the values live until it returns.
  virtual void Take(int count, sqlite3_value** values) = 0;
};

/// The storage SQL of such a scan: the columns (storage SQL, at least one), and FROM with what follows it.
/// The collector is bound to the parameter, which `from` must not use.
[[nodiscard]] std::string CollectSql(const std::string& columns, const std::string& from, int parameter);

/// Binds the collector and runs a statement made of CollectSql() to its end.
void Collect(Statement& scan, int parameter, RowCollector& collector);

/// Registers what CollectSql() uses with a connection. Throws EngineError.
void RegisterCollector(sqlite3* connection);

}  // namespace varnlog::dao
