#include "legacy/JetText.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "platform/Utf8.h"

namespace varnlog::legacy {
namespace {

constexpr int kLatin1Windows = 1252;

constexpr char32_t kReplacement = 0xfffd;

// Writes UTF-8 into memory that is known to be large enough; joins surrogate pairs also across the borders of
// compressed segments.
class Utf8Writer {
 public:
  explicit Utf8Writer(char* out) : out_(out) {}

  void Put(char16_t unit) {
    if (unit < 0x80 && high_ == 0) {
      *out_++ = static_cast<char>(unit);
      return;
    }
    const bool isLow = unit >= 0xdc00 && unit < 0xe000;
    if (high_ != 0 && isLow) {
      const char32_t high = std::exchange(high_, u'\0');
      return PutCodePoint(0x10000 + ((high - 0xd800) << 10U) + (char32_t{unit} - 0xdc00));
    }
    Finish();
    if (unit >= 0xd800 && unit < 0xdc00) {
      high_ = unit;
    } else {
      PutCodePoint(isLow ? kReplacement : char32_t{unit});
    }
  }

  // The end of the text, or of half a pair without its other half.
  char* Finish() {
    if (std::exchange(high_, u'\0') != 0) PutCodePoint(kReplacement);
    return out_;
  }

 private:
  void PutCodePoint(char32_t c) { out_ += platform::EncodeUtf8(c, out_); }

  char* out_;
  char16_t high_ = 0;
};

char16_t Unit(Bytes bytes, std::size_t at) {
  return static_cast<char16_t>(std::to_integer<unsigned>(bytes[at]) | std::to_integer<unsigned>(bytes[at + 1])
                                                                          << 8U);
}

void PutPlain(Bytes text, Utf8Writer& writer) {
  for (std::size_t at = 0; at + 1 < text.size(); at += 2) writer.Put(Unit(text, at));
}

void PutCompressed(Bytes text, Utf8Writer& writer) {
  bool oneByte = true;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == std::byte{0}) {
      oneByte = !oneByte;
      ++at;
    } else if (oneByte) {
      writer.Put(std::to_integer<char16_t>(text[at]));
      ++at;
    } else {
      if (at + 1 < text.size()) writer.Put(Unit(text, at));
      at += 2;
    }
  }
}

}  // namespace

void AppendJet4Text(Bytes stored, std::string& out) {
  const bool isCompressed =
      stored.size() >= 2 && stored[0] == std::byte{0xff} && stored[1] == std::byte{0xfe};
  const std::size_t start = out.size();
  // A byte becomes at most two, a pair of bytes at most three, half a pair of units three more.
  out.resize(start + 2 * stored.size() + 3);
  Utf8Writer writer(out.data() + start);
  if (isCompressed) {
    PutCompressed(stored.subspan(2), writer);
  } else {
    PutPlain(stored, writer);
  }
  out.resize(static_cast<std::size_t>(writer.Finish() - out.data()));
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
