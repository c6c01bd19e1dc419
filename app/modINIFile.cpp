#include "app/modINIFile.h"

#include <charconv>
#include <limits>

#include "app/IniText.h"
#include "platform/CodePage.h"
#include "platform/Files.h"

namespace varnlog::app {

namespace {

// The size of the buffer that the system's own functions are given.
constexpr std::size_t kMostCharacters = 255;

/// The file as UTF-8, or nothing when it cannot be read.
std::optional<std::string> Load(std::string_view file, const std::string& language) {
  std::error_code error;
  const auto bytes = platform::ReadWholeFile(platform::ToPath(file), error);
  if (!bytes) return std::nullopt;
  return platform::DecodeTextFile(*bytes, platform::CodePage::Ansi(language));
}

}  // namespace

modINIFile::modINIFile(std::string_view language) : language_(language) {}

std::string modINIFile::ReadString(std::string_view section, std::string_view key,
                                   std::string_view file) const {
  try {
    const auto text = Load(file, language_);
    if (!text) return {};
    const auto value = FindIniValue(*text, section, key);
    return value ? std::string(platform::FirstCharacters(*value, kMostCharacters)) : std::string();
  } catch (const std::exception&) {
    return {};
  }
}

std::int16_t modINIFile::ReadInteger(std::string_view section, std::string_view key,
                                     std::string_view file) const {
  const std::string value = ReadString(section, key, file);
  std::int16_t number = 0;
  if (value.empty() || value.front() < '0' || value.front() > '9') return 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  return error == std::errc() ? number : std::int16_t{0};
}

bool modINIFile::WriteString(std::string_view section, std::string_view key, std::string_view value,
                             std::string_view file) {
  try {
    const std::filesystem::path path = platform::ToPath(file);
    auto text = Load(file, language_);
    // A file that is there but cannot be read must not be replaced by one that holds this value alone.
    if (!text && std::filesystem::exists(path)) return false;
    const auto changed = WithIniValue(text.value_or(""), section, key, value);
    if (!changed) return false;
    if (text && *changed == *text) return true;
    return !platform::ReplaceFile(path, *changed);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace varnlog::app
