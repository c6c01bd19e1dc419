#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include "platform/Ascii.h"
#include "platform/Utf8.h"

namespace varnlog::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// The UTF-8 form of one byte of a code page. No single-byte page leaves the first plane, so three bytes do.
struct Encoded {
  std::array<char, 3> bytes{};
  unsigned char length = 0;
};

using Characters = std::array<char32_t, 256>;

bool IsWindowsPage(int number) {
  return number >= 1250 && number <= 1258;
}

struct ConverterCloser {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter OpenConverter(int number) {
  const std::string name = (IsWindowsPage(number) ? "windows-" : "cp") + std::to_string(number);
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &error));
  if (U_FAILURE(error) != 0 || ucnv_getMaxCharSize(converter.get()) != 1) {
    throw std::invalid_argument("no single-byte code page " + std::to_string(number));
  }
  return converter;
}

char32_t CharacterOf(UConverter* converter, int number, unsigned char byte) {
  // The control characters and the letters below 0x80 are the same in every page. The converters of the OEM
  // pages exchange three of the control characters among one another, as some printers do.
  if (byte < 0x80) return byte;
  const char source = static_cast<char>(byte);
  UChar target = 0;
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = ucnv_toUChars(converter, &target, 1, &source, 1, &error);
  if (length != 1 || U_FAILURE(error) != 0) target = kReplacement;
  if (target == kReplacement && IsWindowsPage(number) && byte < 0xA0) return byte;
  return target;
}

Characters ReadPage(int number) {
  const Converter converter = OpenConverter(number);
  Characters characters{};
  for (std::size_t byte = 0; byte < characters.size(); ++byte) {
    characters[byte] = CharacterOf(converter.get(), number, static_cast<unsigned char>(byte));
  }
  return characters;
}

Encoded Encode(char32_t character) {
  std::string text;
  AppendCharacter(character, text);
  Encoded encoded;
  std::copy(text.begin(), text.end(), encoded.bytes.begin());
  encoded.length = static_cast<unsigned char>(text.size());
  return encoded;
}

}  // namespace

struct CodePage::Tables {
  explicit Tables(int number) {
    const Characters characters = ReadPage(number);
    for (std::size_t byte = 0; byte < characters.size(); ++byte) {
      toUtf8[byte] = Encode(characters[byte]);
      if (characters[byte] != kReplacement) {
        fromUnicode.emplace_back(characters[byte], static_cast<char>(byte));
      }
    }
    std::stable_sort(fromUnicode.begin(), fromUnicode.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
  }

  [[nodiscard]] char ByteOf(char32_t character) const {
    const auto found = std::lower_bound(fromUnicode.begin(), fromUnicode.end(), character,
                                        [](const auto& entry, char32_t c) { return entry.first < c; });
    return found != fromUnicode.end() && found->first == character ? found->second : '?';
  }

  std::array<Encoded, 256> toUtf8;
  std::vector<std::pair<char32_t, char>> fromUnicode;  // in the order of the characters
};

std::shared_ptr<const CodePage::Tables> CodePage::TablesOf(int number) {
  static std::mutex mutex;
  static std::map<int, std::shared_ptr<const Tables>> pages;
  const std::scoped_lock lock(mutex);
  std::shared_ptr<const Tables>& tables = pages[number];
  if (tables == nullptr) tables = std::make_shared<const Tables>(number);
  return tables;
}

CodePage::CodePage(int number) : number_(number), tables_(TablesOf(number)) {}

CodePage CodePage::Ansi(std::string_view language) {
  return CodePage(language == "CYR" ? 1251 : 1252);
}

std::string CodePage::ToUtf8(std::string_view bytes) const {
  std::string out;
  AppendUtf8(bytes, out);
  return out;
}

void CodePage::AppendUtf8(std::string_view bytes, std::string& out) const {
  for (;;) {
    const std::size_t ascii = AsciiPrefix(bytes);
    out.append(bytes.data(), ascii);
    bytes.remove_prefix(ascii);
    if (bytes.empty()) return;
    const Encoded& encoded = tables_->toUtf8[static_cast<unsigned char>(bytes.front())];
    out.append(encoded.bytes.data(), encoded.length);
    bytes.remove_prefix(1);
  }
}

std::string CodePage::FromUtf8(std::string_view text) const {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::optional<char32_t> character = NextCharacter(text);
    out.push_back(character ? tables_->ByteOf(*character) : '?');
  }
  return out;
}

void AppendCharacter(char32_t character, std::string& out) {
  if (character > 0x10FFFF || U_IS_SURROGATE(character)) character = kReplacement;
  std::array<char, kMostUtf8Bytes> bytes{};
  out.append(bytes.data(), EncodeUtf8(character, bytes.data()));
}

std::string UpperCase(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    const std::optional<char32_t> character = NextCharacter(text);
    if (!character) {
      out.push_back(before.front());
    } else if (*character < 0x80) {
      out.push_back(ascii::Upper(before.front()));
    } else {
      AppendCharacter(static_cast<char32_t>(u_toupper(static_cast<UChar32>(*character))), out);
    }
  }
  return out;
}

}  // namespace varnlog::platform
