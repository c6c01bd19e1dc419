#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace varnlog::dao {

class Database;

/// Databases of another format, which are read by loading them whole.
struct ForeignFormat {
  /// Whether a file that begins with these bytes (at most kForeignStart of them) is of that format.
  std::function<bool(std::string_view start)> recognises;
  /// Makes the file's tables in the empty database `target` and fills them. Throws EngineError.
  std::function<void(const std::string& path, Database& target)> load;
};

inline constexpr int kForeignStart = 64;

}  // namespace varnlog::dao
