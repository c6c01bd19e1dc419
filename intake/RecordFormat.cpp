#include "intake/RecordFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>

namespace varnlog::intake {
namespace {

/// Stands for the one string that holds two properties.
constexpr CToken::Property kSplit = CToken::kPropertyCount;

constexpr std::array<CToken::Property, 20> kNewExposure = {
    CToken::kField1,  CToken::kLastName, CToken::kFirstName, CToken::kBirthday,
    CToken::kField5,  CToken::kField6,   CToken::kSex,       CToken::kPregCode,
    kSplit,           CToken::kTakeDate, CToken::kTakeTime,  CToken::kResponsible,
    CToken::kField14, CToken::kField15,  CToken::kRadDur,    CToken::kVolt,
    CToken::kCur,     CToken::kField19,  CToken::kField20,   CToken::kDose,
};
constexpr std::array<CToken::Property, 10> kInformation = {
    CToken::kLastName, CToken::kFirstName, CToken::kBirthday,    CToken::kField5,  CToken::kField6, kSplit,
    CToken::kTakeDate, CToken::kTakeTime,  CToken::kResponsible, CToken::kField14,
};

std::span<const CToken::Property> StringsOf(char kind, Extent extent = Extent::kAll) {
  constexpr std::size_t kExposureUpToTime = 11;
  constexpr std::size_t kInformationUpToTime = 8;
  const bool isExposure = kind == 'T';
  const std::span<const CToken::Property> all =
      isExposure ? std::span<const CToken::Property>(kNewExposure) : kInformation;
  if (extent == Extent::kAll) return all;
  return all.first(isExposure ? kExposureUpToTime : kInformationUpToTime);
}

std::uint64_t Word(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

constexpr std::uint64_t kHighBits = 0x8080808080808080U;

/// The high bit of each byte that is zero. No carry crosses a byte, so each is right whatever stands beside
/// it.
std::uint64_t ZeroBytes(std::uint64_t word) {
  return ~(((word & ~kHighBits) + ~kHighBits) | word) & kHighBits;
}

/// Eight bytes at a time: a million records are counted here before one of them is taken.
std::size_t CountZeros(std::string_view bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  constexpr int kTopByte = 56;
  std::size_t zeros = 0;
  while (bytes.size() >= sizeof(std::uint64_t)) {
    // The product adds up all bytes in its highest one.
    zeros += static_cast<std::size_t>(((ZeroBytes(Word(bytes.data())) >> 7U) * kOnes) >> kTopByte);
    bytes.remove_prefix(sizeof(std::uint64_t));
  }
  return zeros + static_cast<std::size_t>(std::ranges::count(bytes, '\0'));
}

/// The length of the string that `bytes` begins with, or npos without a terminator. Most are shorter than
/// eight characters, and then calling the library's search would be the longer part of the work.
std::size_t StringLength(std::string_view bytes) {
  if (std::endian::native == std::endian::little && bytes.size() >= sizeof(std::uint64_t)) {
    const std::uint64_t zeros = ZeroBytes(Word(bytes.data()));
    if (zeros != 0) return static_cast<std::size_t>(std::countr_zero(zeros)) / 8;
  }
  return bytes.find('\0');
}

bool IsAscii(std::string_view bytes) {
  std::uint64_t seen = 0;
  while (bytes.size() >= sizeof(std::uint64_t)) {
    seen |= Word(bytes.data());
    bytes.remove_prefix(sizeof(std::uint64_t));
  }
  for (const char c : bytes) seen |= static_cast<unsigned char>(c);
  return (seen & kHighBits) == 0;
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return text;
}

/// Puts strings into a token; a record of ASCII bytes alone, as most are, is copied as it stands.
class Filler {
 public:
  Filler(CToken& token, const platform::CodePage& oem, bool ascii)
      : token_(token), oem_(oem), ascii_(ascii) {}

  void Put(CToken::Property property, std::string_view text) {
    if (property == kSplit) {
      Convert(CToken::kTypeCode, text.substr(text.size() - std::min<std::size_t>(text.size(), 2)));
      Convert(CToken::kTypeExtra, WithoutLeadingBlanks(text.substr(0, 2)));
    } else {
      Convert(property, text);
    }
  }

 private:
  void Convert(CToken::Property property, std::string_view text) {
    std::string& value = token_.Mutable(property);
    if (ascii_) {
      value.assign(text);
    } else {
      value.clear();
      oem_.AppendUtf8(text, value);
    }
  }

  CToken& token_;
  const platform::CodePage& oem_;
  bool ascii_;
};

}  // namespace

bool IsKnownKind(char kind) {
  return kind == 'T' || kind == 'I';
}

bool HasItsStrings(std::string_view record) {
  return CountZeros(record.substr(kShortestRecord)) >= StringsOf(record[kLengthBytes]).size();
}

bool ParseRecord(std::string_view record, const platform::CodePage& oem, CToken& token, Extent extent) {
  const char kind = record[kLengthBytes];
  std::string_view rest = record.substr(kShortestRecord);
  const std::span<const CToken::Property> strings = StringsOf(kind, extent);
  if (kind != 'T') token.Reset();  // a new exposure fills every property
  token.Set(CToken::kKind, record.substr(kLengthBytes, 1));
  Filler filler(token, oem, IsAscii(rest));
  for (const CToken::Property property : strings) {
    const std::size_t length = StringLength(rest);
    if (length == std::string_view::npos) return false;
    filler.Put(property, WithoutTrailingBlanks(rest.substr(0, length)));
    rest.remove_prefix(length + 1);
  }
  return true;
}

}  // namespace varnlog::intake
