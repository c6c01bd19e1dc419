#pragma once

#include <string>
#include <vector>

namespace varnlog::dao {

class Connection;

/// Everything that is wrong with an open file, one finding an entry: its pages, its indexes, and values that
/// are not of their field's type or are too long for it.
[[nodiscard]] std::vector<std::string> CheckFile(Connection& connection);

/// The pages and indexes alone: what a repair can mend.
[[nodiscard]] std::vector<std::string> CheckStructure(Connection& connection);

}  // namespace varnlog::dao
