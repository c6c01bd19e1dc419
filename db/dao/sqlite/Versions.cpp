#include <sqlite3.h>
#include <unicode/uversion.h>

#include "db/dao/DBEngine.h"

namespace varnlog::dao {

std::string DBEngine::StorageVersion() {
  return sqlite3_libversion();
}

std::string DBEngine::TextOrderVersion() {
  return U_ICU_VERSION;
}

}  // namespace varnlog::dao
