#include "db/dao/sqlite/rows/RowCollector.h"

#include <new>

#include <sqlite3.h>

#include "db/dao/EngineError.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {
namespace {

constexpr const char* kPointerType = "varnlog row collector";

struct Scan {
  RowCollector* collector;
};

void TakeRow(sqlite3_context* context, int count, sqlite3_value** values) {
  // Zeroed when the scan begins; checking the pointer's type once a row would take as long as the row.
  auto* scan = static_cast<Scan*>(sqlite3_aggregate_context(context, sizeof(Scan)));
  if (scan == nullptr) return sqlite3_result_error_nomem(context);
  if (scan->collector == nullptr) {
    scan->collector = static_cast<RowCollector*>(sqlite3_value_pointer(values[0], kPointerType));
    if (scan->collector == nullptr) return sqlite3_result_error(context, "no collector", -1);
  }
  try {
    scan->collector->Take(count - 1, values + 1);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

void Finish(sqlite3_context* context) {
  sqlite3_result_null(context);
}

}  // namespace

std::string CollectSql(const std::string& columns, const std::string& from, int parameter) {
  return "SELECT jet_collect(?" + std::to_string(parameter) + ", " + columns + ") FROM " + from;
}

void Collect(Statement& scan, int parameter, RowCollector& collector) {
  const ResetAtEnd reset(scan);
  if (sqlite3_bind_pointer(scan.Handle(), parameter, &collector, kPointerType, nullptr) != SQLITE_OK)
    throw std::bad_alloc();
  scan.Run();
}

void RegisterCollector(sqlite3* connection) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DIRECTONLY;
  const int result = sqlite3_create_function_v2(connection, "jet_collect", -1, kFlags, nullptr, nullptr,
                                                TakeRow, Finish, nullptr);
  if (result != SQLITE_OK) throw EngineError(ErrorNumber::kUnexpected, sqlite3_errmsg(connection));
}

}  // namespace varnlog::dao
