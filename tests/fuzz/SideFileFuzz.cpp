#include "intake/IntakeCopy.h"
#include "tests/support/TestFolder.h"

/// The safe copy. Its sum would refuse nearly everything, so the right one is put behind the bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnlog;
  std::string bytes(reinterpret_cast<const char*>(data), size);
  intake::Checksum sum;
  sum.Add(bytes);
  intake::AppendNumber(bytes, sum.Value());
  const test::TestFolder folder;
  folder.Holding("log.mdb.intake", bytes);
  intake::IntakeCopy copy(folder / "log.mdb");
  copy.Load();
  for (const intake::CopySection& section : copy.Sections()) {
    if (!intake::SumOf(section.bytes)) std::abort();  // a section that lies outside the file
  }
  return 0;
}
