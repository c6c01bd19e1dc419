#include "app/Libraries.h"

#include "db/dao/DBEngine.h"
#include "platform/Sha256.h"

namespace varnlog::app {

std::vector<ui::UsedLibrary> UsedLibraries() {
  return {
      ui::QtLibrary(),
      {"SQLite", dao::DBEngine::StorageVersion(), "Public Domain"},
      {"ICU", dao::DBEngine::TextOrderVersion(), "Unicode License V3"},
      {"Nettle", platform::Sha256LibraryVersion(), "LGPL 3 / GPL 2"},
  };
}

}  // namespace varnlog::app
