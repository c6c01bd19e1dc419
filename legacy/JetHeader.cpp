#include "legacy/JetHeader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "legacy/Rc4.h"

namespace varnlog::legacy {
namespace {

// From kMaskedStart on the first page is hidden under a fixed key in every file, encoded or not.
constexpr std::uint32_t kHeaderKey = 0x6b39dac7;
constexpr std::size_t kMaskedStart = 0x18;
constexpr std::size_t kMaskedLength = 126;
constexpr std::size_t kVersionAt = 0x14;
constexpr std::size_t kCodePageAt = 0x3c;
constexpr std::size_t kKeyAt = 0x3e;
constexpr std::size_t kPasswordAt = 0x42;
constexpr std::size_t kCreatedAt = 0x72;

std::array<std::byte, kMaskedStart + kMaskedLength> UnmaskedStart(Bytes file) {
  std::array<std::byte, kMaskedStart + kMaskedLength> start{};
  Rc4(kHeaderKey).Apply(file.subspan(kMaskedStart, kMaskedLength), std::span(start).subspan(kMaskedStart));
  return start;
}

// Version 4 hides the password once more under the day on which the file was made, repeated; an empty
// password therefore leaves that day.
std::uint32_t PasswordMask(JetVersion version, ByteReader& start) {
  if (version == JetVersion::kJet3) return 0;
  const double created = start.F64(kCreatedAt);
  const bool plausible = created > 0 && created < 4e6;
  return plausible ? static_cast<std::uint32_t>(created) : start.U32(kPasswordAt);
}

bool HasPassword(JetVersion version, ByteReader& start) {
  const std::uint32_t mask = PasswordMask(version, start);
  const std::size_t words = version == JetVersion::kJet3 ? 5 : 10;
  for (std::size_t i = 0; i < words; ++i) {
    if (start.U32(kPasswordAt + 4 * i) != mask) return true;
  }
  return false;
}

bool BeginsWith(Bytes start, std::string_view signature) {
  return start.size() >= signature.size() &&
         std::equal(signature.begin(), signature.end(), start.begin(),
                    [](char expected, std::byte found) { return static_cast<std::byte>(expected) == found; });
}

}  // namespace

bool IsJet(Bytes start) {
  // The second name is the one that versions after 4 write.
  constexpr std::string_view kSignatures[] = {{"\x00\x01\x00\x00Standard Jet DB\x00", kSignatureLength},
                                              {"\x00\x01\x00\x00Standard ACE DB\x00", kSignatureLength}};
  return std::any_of(std::begin(kSignatures), std::end(kSignatures),
                     [&](std::string_view signature) { return BeginsWith(start, signature); });
}

Result<JetHeader> ReadHeader(Bytes file) {
  if (!IsJet(file)) return Fault{FaultKind::kNotJet};
  ByteReader plain(file);
  const std::uint8_t version = plain.U8(kVersionAt);
  if (plain.Overran()) return Fault{FaultKind::kTruncated};
  if (version > static_cast<std::uint8_t>(JetVersion::kJet4)) return Fault{FaultKind::kUnknownVersion};

  JetHeader header;
  header.version = static_cast<JetVersion>(version);
  header.pageSize = header.IsJet3() ? 2048 : 4096;
  if (file.size() < header.pageSize) return Fault{FaultKind::kTruncated};
  const auto start = UnmaskedStart(file);
  ByteReader reader(start);
  if (const int codePage = reader.U16(kCodePageAt); codePage != 0) header.codePage = codePage;
  header.encodingKey = reader.U32(kKeyAt);
  header.hasPassword = HasPassword(header.version, reader);
  return header;
}

}  // namespace varnlog::legacy
