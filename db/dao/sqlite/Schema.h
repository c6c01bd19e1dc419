#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

class Connection;

/// Throws kTableNotFound.
[[nodiscard]] TableSchema ReadTableSchema(Connection& connection, std::string_view name);
/// Names as declared, in the order in which the tables were made.
[[nodiscard]] std::vector<std::string> ReadTableNames(Connection& connection);

/// "TEXT(32) COLLATE JET" and the like: how a field is declared in the storage.
[[nodiscard]] std::string DeclaredType(const FieldDef& field);

}  // namespace varnlog::dao
