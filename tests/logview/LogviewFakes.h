#pragma once

#include <map>
#include <string>
#include <utility>

#include "core/SettingsStore.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/FakeToothScheme.h"
#include "tests/support/FakeUser.h"

namespace varnlog::logview {

/// The words of the codes; any other text is its key.
struct FakeTexts : test::FakeTexts {
  FakeTexts()
      : test::FakeTexts({{"RC_PREGYES", "ja"},
                         {"RC_PREGNO", "nein"},
                         {"RC_PREGUNKNOWN", "unbekannt"},
                         {"RC_REPEAT", "Wiederholung"},
                         {"RC_ND", "nicht diagnostisch"}}) {}
};

/// One INI file in memory.
class FakeSettings final : public core::SettingsStore {
 public:
  std::map<std::pair<std::string, std::string>, std::string> values;

  [[nodiscard]] std::int16_t ReadInteger(std::string_view section, std::string_view key,
                                         std::string_view file) const override {
    return static_cast<std::int16_t>(std::atoi(ReadString(section, key, file).c_str()));
  }
  [[nodiscard]] std::string ReadString(std::string_view section, std::string_view key,
                                       std::string_view /*file*/) const override {
    const auto value = values.find({std::string(section), std::string(key)});
    return value == values.end() ? std::string() : value->second;
  }
  bool WriteString(std::string_view section, std::string_view key, std::string_view value,
                   std::string_view /*file*/) override {
    values[{std::string(section), std::string(key)}] = value;
    return true;
  }
};

using test::FakeToothScheme;
using test::FakeUser;

}  // namespace varnlog::logview
