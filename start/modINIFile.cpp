#include "start/modINIFile.h"

#include <charconv>
#include <exception>

#include "platform/Ascii.h"
#include "platform/CodePage.h"
#include "platform/SafeFile.h"
#include "start/IniText.h"

namespace varnlog::start {

namespace {

using platform::CodePage;

// The size of the buffer that the system's own functions are given.
constexpr std::size_t kMostCharacters = 255;

/// A file as it is held while it is read or changed: UTF-8, and what it was before.
struct IniFile {
  std::string text;
  bool isAnsi = false;
  bool hasMark = false;
};

IniFile Decoded(std::string_view bytes, const CodePage& ansi) {
  return {platform::DecodeTextFile(bytes, ansi), !platform::IsUtf8(bytes),
          bytes.starts_with(platform::kByteOrderMark)};
}

/// A file in a code page stays in it, and so keeps every byte of the lines that nobody changed, as long as
/// the new value can be written in that page. Else the whole file becomes UTF-8.
std::string Encoded(const IniFile& file, const std::string& text, const CodePage& ansi) {
  if (file.hasMark) return std::string(platform::kByteOrderMark) + text;
  if (!file.isAnsi) return text;
  std::string bytes = ansi.FromUtf8(text);
  return ansi.ToUtf8(bytes) == text ? bytes : text;
}

}  // namespace

modINIFile::modINIFile(std::string_view language) : language_(language) {}

std::string modINIFile::ReadString(std::string_view section, std::string_view key,
                                   std::string_view file) const {
  try {
    std::error_code error;
    const auto bytes = platform::ReadWholeFile(platform::ToPath(file), error);
    if (!bytes) return {};
    const IniFile ini = Decoded(*bytes, CodePage::Ansi(language_));
    const std::string value = FindIniValue(ini.text, section, key).value_or("");
    return std::string(platform::FirstCharacters(value, kMostCharacters));
  } catch (const std::exception&) {
    return {};
  }
}

std::int16_t modINIFile::ReadInteger(std::string_view section, std::string_view key,
                                     std::string_view file) const {
  const std::string value = ReadString(section, key, file);
  std::int16_t number = 0;
  if (value.empty() || !platform::ascii::IsDigit(value.front())) return 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  return error == std::errc() ? number : std::int16_t{0};
}

bool modINIFile::WriteString(std::string_view section, std::string_view key, std::string_view value,
                             std::string_view file) {
  try {
    const std::filesystem::path path = platform::ToPath(file);
    std::error_code error;
    const auto bytes = platform::ReadWholeFile(path, error);
    // A file that is there but cannot be read must not be replaced by one that holds this value alone.
    if (!bytes && error != std::errc::no_such_file_or_directory) return false;
    const CodePage ansi = CodePage::Ansi(language_);
    const IniFile ini = Decoded(bytes.value_or(""), ansi);
    const auto changed = WithIniValue(ini.text, section, key, value);
    if (!changed) return false;
    if (bytes && *changed == ini.text) return true;
    return !platform::ReplaceFile(path, Encoded(ini, *changed, ansi));
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace varnlog::start
