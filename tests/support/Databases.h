#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "db/dao/DBEngine.h"
#include "tests/Paths.h"

namespace varnlog::test {

[[nodiscard]] inline std::string Content(const std::filesystem::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

/// Makes a database of the program folder ("log.sql", "workgroup.sql") and leaves it open.
inline std::shared_ptr<dao::Database> MakeDatabase(dao::DBEngine& engine, const std::filesystem::path& path,
                                                   const char* source) {
  auto database = engine.CreateDatabase(path.string(), "", 0);
  database->Execute(Content(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / source));
  return database;
}

}  // namespace varnlog::test
