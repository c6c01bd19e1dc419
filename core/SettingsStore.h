#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace varnlog::core {

/// INI files as the system's private-profile functions treat them. Nothing here fails loudly: what cannot be
/// read is 0 or "", what cannot be written returns false.
class SettingsStore {
 public:
  virtual ~SettingsStore() = default;
  [[nodiscard]] virtual std::int16_t ReadInteger(std::string_view section, std::string_view key,
                                                 std::string_view file) const = 0;
  /// At most 255 characters.
  [[nodiscard]] virtual std::string ReadString(std::string_view section, std::string_view key,
                                               std::string_view file) const = 0;
  virtual bool WriteString(std::string_view section, std::string_view key, std::string_view value,
                           std::string_view file) = 0;
};

}  // namespace varnlog::core
