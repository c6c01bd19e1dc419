#include "app/Libraries.h"

#include "db/dao/DBEngine.h"

namespace varnlog::app {

std::vector<ui::UsedLibrary> UsedLibraries() {
  return {
      ui::QtLibrary(),
      {"SQLite", dao::DBEngine::StorageVersion(), "Public Domain"},
      {"ICU", dao::DBEngine::TextOrderVersion(), "Unicode License V3"},
  };
}

}  // namespace varnlog::app
