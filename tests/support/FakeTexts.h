#pragma once

#include <map>
#include <string>
#include <utility>

#include "core/TextLookup.h"

namespace varnlog::test {

/// Texts that a test gives; any other says which key it stands for, with whatever placeholders the test wants
/// to see filled behind it.
class FakeTexts : public core::TextLookup {
 public:
  explicit FakeTexts(std::map<std::string, std::string> given = {}, std::string placeholders = {})
      : texts(std::move(given)), placeholders_(std::move(placeholders)) {}

  [[nodiscard]] std::string GetText(core::TextKey key) const override {
    const std::string name(key.name());
    const auto found = texts.find(name);
    return found == texts.end() ? name + placeholders_ : found->second;
  }

  std::map<std::string, std::string> texts;

 private:
  std::string placeholders_;
};

}  // namespace varnlog::test
