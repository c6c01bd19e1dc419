#pragma once

#include <string>

namespace varnlog::dao {

/// Whether this process has the file open as a database, under whatever name. Nobody may open such a file in
/// another way: when a process closes any handle of a file, POSIX systems drop all locks that it has on it,
/// those of an open transaction too, and two workstations write at once.
[[nodiscard]] bool IsOpenHere(const std::string& path);

/// Runs the declarations of a log's schema on the server that the link file names, all of them or none. In
/// them, `{schema}`, `{owner}` and `{program}` stand for the schema and the two roles, quoted, and
/// `{schema:text}` and so on for the same as texts. Throws EngineError.
void DeclareOnServer(const std::string& link, std::string_view declarations);

}  // namespace varnlog::dao
