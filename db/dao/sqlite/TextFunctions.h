#pragma once

struct sqlite3;

namespace varnlog::dao {

/// The storage name of the collation.
inline constexpr const char* kCollationName = "JET";

/// Registers the collation and the functions jet_concat(a, b, ...) (NULL as empty) and jet_like(pattern,
/// text) (NULL when either is) with a connection. Throws EngineError.
void RegisterText(sqlite3* connection);

}  // namespace varnlog::dao
