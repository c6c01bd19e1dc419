#include <cstdlib>
#include <string_view>

#include "start/IniText.h"

/// An INI file in any state. A value that could be set can be read, and nothing else has changed.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  using namespace varnlog::start;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto other = FindIniValue(text, "User", "DataFile");
  const auto changed = WithIniValue(text, "App", "Language", "GB");
  if (!changed || FindIniValue(*changed, "App", "Language") != "GB") std::abort();
  if (FindIniValue(*changed, "User", "DataFile") != other) std::abort();
  return 0;
}
