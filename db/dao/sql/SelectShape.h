#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

/// Takes the texts that a statement compares with "=" out of it, so that statements that differ only in them
/// have one shape. `shape` becomes the statement with a mark in place of each such text, `texts` their
/// values. False when the statement's quotes are not paired or it holds
/// a mark already; its shape means nothing then.
[[nodiscard]] bool LiftTexts(std::string_view jetSql, std::string& shape, std::vector<std::string>& texts);

/// Puts the parameters ?1, ?2, ... into translated SQL in place of the marks; false when a mark is not in it.
[[nodiscard]] bool MarksToParameters(std::string& storageSql, std::size_t count);

}  // namespace varnlog::dao
