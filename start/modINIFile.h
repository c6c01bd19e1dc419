#pragma once

#include <string>

#include "core/SettingsStore.h"

namespace varnlog::start {

/// INI files by the rules of the system they come from: section and key names without regard to letter case,
/// blanks around names and values ignored, a value in matching quotes loses them, the first of two equal
/// names counts, values cut at 255 characters, integers as far as the digits go. Lines that are not
/// understood are kept when a value is written; a file is replaced as a whole, never rewritten in place.
/// `language` chooses the code page of files that are not UTF-8; such a file stays in its code page as long
/// as that can hold the value. Every read looks at the file, so nothing here is ever out of date.
class modINIFile final : public core::SettingsStore {
 public:
  explicit modINIFile(std::string_view language = "D");

  [[nodiscard]] std::int16_t ReadInteger(std::string_view section, std::string_view key,
                                         std::string_view file) const override;
  [[nodiscard]] std::string ReadString(std::string_view section, std::string_view key,
                                       std::string_view file) const override;
  bool WriteString(std::string_view section, std::string_view key, std::string_view value,
                   std::string_view file) override;

 private:
  std::string language_;
};

}  // namespace varnlog::start
