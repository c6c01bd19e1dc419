#pragma once

#include <string>
#include <string_view>

#include "core/Globals.h"
#include "core/TextLookup.h"

namespace varnlog::start {

/// The language database "verbalo.mdb" of the program folder, held by Globals::LangEngineGl.
class Language final : public core::TextLookup {
 public:
  explicit Language(core::Globals& globals);
  ~Language() override;

  /// False when the workspace or the file cannot be opened; InitError() says why. Selects "D".
  [[nodiscard]] bool InitLanguage();
  [[nodiscard]] const std::string& InitError() const { return initError_; }
  /// One of the seven codes, letter case counts; anything else selects "D" and returns false.
  bool SetLanguage(std::string_view code);
  /// False when nothing was open.
  bool CloseLanguage();

  /// One query a call; "" when there is no such row or the query fails.
  [[nodiscard]] std::string GetText(core::TextKey key) const override;

 private:
  core::Globals& globals_;
  std::string initError_;
};

}  // namespace varnlog::start
