#include <limits>

#include "intake/CPAXTOTokens.h"
#include "tests/support/TestFolder.h"

/// What the suite might write. Nothing may be read beyond the file, and what was counted can be had.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnlog;
  const test::TestFolder folder;
  const auto file = folder.Holding("varnlog.sdx", {reinterpret_cast<const char*>(data), size});
  intake::CPAXTOTokens tokens(platform::CodePage(850));
  if (!tokens.OpenMailslot(file.string())) return 0;
  const std::int64_t end = tokens.ReadMailslot(std::numeric_limits<std::int64_t>::max());
  if (end < 0 || end > static_cast<std::int64_t>(size)) std::abort();
  intake::CToken token;
  for (std::int64_t i = 0; i < tokens.Count(); ++i) {
    if (!tokens.Item(i, token)) std::abort();
  }
  return 0;
}
