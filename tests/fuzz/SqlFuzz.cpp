#include <string_view>

#include "db/dao/EngineError.h"
#include "db/dao/sqlite/FileDialect.h"

/// Any text as a query, because names of patients stand in queries as they are.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  try {
    static_cast<void>(varnlog::dao::ParseSelect({reinterpret_cast<const char*>(data), size}));
  } catch (const varnlog::dao::EngineError&) {
    return 0;  // refused, with the place
  }
  return 0;
}
