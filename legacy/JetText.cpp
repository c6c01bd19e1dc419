#include "legacy/JetText.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace varnlog::legacy {
namespace {

constexpr int kLatin1Windows = 1252;

void AppendCodePoint(char32_t c, std::string& out) {
  const auto tail = [&](int shift) { out += static_cast<char>(0x80U | ((c >> shift) & 0x3fU)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xc0U | (c >> 6U));
    tail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xe0U | (c >> 12U));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xf0U | (c >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

// Joins surrogate pairs across the borders of compressed segments.
class Utf16Sink {
 public:
  explicit Utf16Sink(std::string& out) : out_(out) {}
  ~Utf16Sink() { FlushHalf(); }
  Utf16Sink(const Utf16Sink&) = delete;
  Utf16Sink& operator=(const Utf16Sink&) = delete;

  void Put(char16_t unit) {
    const bool isHigh = unit >= 0xd800 && unit < 0xdc00;
    const bool isLow = unit >= 0xdc00 && unit < 0xe000;
    if (high_ != 0 && isLow) {
      AppendCodePoint(0x10000 + ((char32_t{high_} - 0xd800) << 10U) + (char32_t{unit} - 0xdc00), out_);
      high_ = 0;
      return;
    }
    FlushHalf();
    if (isHigh) {
      high_ = unit;
    } else {
      AppendCodePoint(isLow ? kReplacement : char32_t{unit}, out_);
    }
  }

 private:
  static constexpr char32_t kReplacement = 0xfffd;
  void FlushHalf() {
    if (high_ != 0) AppendCodePoint(kReplacement, out_);
    high_ = 0;
  }

  std::string& out_;
  char16_t high_ = 0;
};

char16_t Unit(Bytes bytes, std::size_t at) {
  return static_cast<char16_t>(std::to_integer<unsigned>(bytes[at]) | std::to_integer<unsigned>(bytes[at + 1])
                                                                          << 8U);
}

void PutPlain(Bytes text, Utf16Sink& sink) {
  for (std::size_t at = 0; at + 1 < text.size(); at += 2) sink.Put(Unit(text, at));
}

void PutCompressed(Bytes text, Utf16Sink& sink) {
  bool oneByte = true;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == std::byte{0}) {
      oneByte = !oneByte;
      ++at;
    } else if (oneByte) {
      sink.Put(std::to_integer<char16_t>(text[at]));
      ++at;
    } else {
      if (at + 1 < text.size()) sink.Put(Unit(text, at));
      at += 2;
    }
  }
}

}  // namespace

void AppendJet4Text(Bytes stored, std::string& out) {
  Utf16Sink sink(out);
  const bool isCompressed =
      stored.size() >= 2 && stored[0] == std::byte{0xff} && stored[1] == std::byte{0xfe};
  if (isCompressed) {
    PutCompressed(stored.subspan(2), sink);
  } else {
    PutPlain(stored, sink);
  }
}

JetText::JetText(const JetHeader& header) : isJet3_(header.IsJet3()), codePage_(header.codePage) {}

const platform::CodePage& JetText::Page(int codePage) const {
  const int wanted = codePage != 0 ? codePage : codePage_;
  const auto known =
      std::find_if(pages_.begin(), pages_.end(), [&](const auto& entry) { return entry.first == wanted; });
  if (known != pages_.end()) return known->second;
  const auto make = [&](int number) -> const platform::CodePage& {
    return pages_.emplace_back(wanted, platform::CodePage(number)).second;
  };
  for (const int number : {wanted, codePage_}) {
    try {
      return make(number);
    } catch (const std::invalid_argument&) {
      continue;  // a damaged number, or a page this system lacks
    }
  }
  return make(kLatin1Windows);
}

void JetText::Append(Bytes stored, int codePage, std::string& out) const {
  if (!isJet3_) {
    AppendJet4Text(stored, out);
    return;
  }
  const auto* characters = reinterpret_cast<const char*>(stored.data());
  Page(codePage).AppendUtf8(std::string_view(characters, stored.size()), out);
}

std::string JetText::Decode(Bytes stored, int codePage) const {
  std::string text;
  Append(stored, codePage, text);
  return text;
}

}  // namespace varnlog::legacy
