#pragma once

#include <string>
#include <string_view>

namespace varnlog::dao {

/// Whether the file under this name says on which server a log is; not when it cannot be read.
[[nodiscard]] bool IsServerLink(const std::string& path);

/// Runs the declarations of a log's schema on the server that the link file names, all of them or none. In
/// them, `{schema}`, `{owner}` and `{program}` stand for the schema and the two roles, quoted, and
/// `{schema:text}` and so on for the same as texts, and `{years:text}` for whether the exposures are to be
/// kept in one table a year. Throws EngineError.
void DeclareOnServer(const std::string& link, std::string_view declarations, bool byYear = false);

}  // namespace varnlog::dao
