#include <cstddef>
#include <cstdint>

#include "legacy/LogExamination.h"

namespace {

void ReadTables(const varnlog::legacy::JetDatabase& database) {
  for (const std::string& name : database.TableNames()) {
    varnlog::legacy::FaultList faults;
    if (const auto table = database.Table(name)) {
      database.Read(
          *table, [](const varnlog::legacy::JetRow&) { return true; }, faults);
    }
  }
}

}  // namespace

/// Every sequence of bytes must be read or refused; tests/data/jet is a corpus to begin with.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto file = std::as_bytes(std::span(data, size));
  if (const auto database = varnlog::legacy::JetDatabase::Open(file)) ReadTables(*database);
  const auto found = varnlog::legacy::Examine(file);
  for (const auto& fault : found.faults.First()) static_cast<void>(varnlog::legacy::Describe(fault));
  return 0;
}
