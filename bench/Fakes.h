#pragma once

#include <string>

#include "intake/CodeMappings.h"

namespace varnlog::bench {

class KeyTexts final : public core::TextLookup {
 public:
  [[nodiscard]] std::string GetText(core::TextKey key) const override { return std::string(key.name()); }
};

class Fdi final : public intake::ToothScheme {
 public:
  [[nodiscard]] bool SchemeUS() const override { return false; }
};

}  // namespace varnlog::bench
