#pragma once

#include <cstdint>

#include "legacy/Fault.h"
#include "legacy/JetBytes.h"

namespace varnlog::legacy {

enum class JetVersion : std::uint8_t { kJet3 = 0, kJet4 = 1 };

/// What the first page says of the whole file.
struct JetHeader {
  JetVersion version = JetVersion::kJet4;
  std::uint32_t pageSize = 4096;
  int codePage = 1252;            // of the text of Jet 3
  std::uint32_t encodingKey = 0;  // 0: pages are stored plainly
  bool hasPassword = false;       // the data reads without it

  [[nodiscard]] bool IsJet3() const { return version == JetVersion::kJet3; }
  [[nodiscard]] bool IsEncoded() const { return encodingKey != 0; }
};

/// The bytes that IsJet() looks at.
inline constexpr std::size_t kSignatureLength = 20;

/// True when `start` begins as a Jet database of any version does.
[[nodiscard]] bool IsJet(Bytes start);

/// Fails with kNotJet, kUnknownVersion or, when the first page is not whole, kTruncated.
[[nodiscard]] Result<JetHeader> ReadHeader(Bytes file);

}  // namespace varnlog::legacy
