#include "tools/kvfiledb/KvFileDb.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

// The stand-in for the imaging suite's library. Like the original it finds its files in the current folder,
// which its callers make the suite's folder before they call.

namespace {

/// "Key=value" lines of kvfiledb.ini:
///   Data=PATH       the data folder; "Data" in the suite's folder when not given
///   OpenResult=N    what FDB_Open returns instead of 0
///   InfoResult=N    what FDB_GetDataBaseInfo returns instead of 0
std::string Setting(const std::string& key) {
  std::ifstream file("kvfiledb.ini");
  const std::string start = key + "=";
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.compare(0, start.size(), start) == 0) return line.substr(start.size());
  }
  return {};
}

int Result(const std::string& key) {
  return std::atoi(Setting(key).c_str());
}

std::string DataFolder() {
  std::string folder = Setting("Data");
  if (folder.empty()) folder = (std::filesystem::current_path() / "Data").string();
  if (folder.back() != '/' && folder.back() != '\\') {
    folder += static_cast<char>(std::filesystem::path::preferred_separator);
  }
  return folder;
}

bool isOpen = false;

}  // namespace

int KVFILEDB_CALL FDB_Open() {
  const int result = Result("OpenResult");
  isOpen = result == 0;
  return result;
}

int KVFILEDB_CALL FDB_GetDataBaseInfo(char* buffer, int size, int /*unused*/, int /*unused*/,
                                      int /*unused*/) {
  if (!isOpen || buffer == nullptr) return 1;
  if (const int result = Result("InfoResult"); result != 0) return result;
  try {
    const std::string folder = DataFolder();
    if (folder.size() >= static_cast<std::size_t>(size)) return 2;
    std::memcpy(buffer, folder.c_str(), folder.size() + 1);
    return 0;
  } catch (const std::filesystem::filesystem_error&) {
    return 3;
  }
}

int KVFILEDB_CALL FDB_Close() {
  isOpen = false;
  return 0;
}
