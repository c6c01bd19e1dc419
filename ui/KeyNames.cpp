#include "ui/KeyNames.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ui/QtText.h"

namespace varnlog::ui {

using core::literals::operator""_key;

QString KeyNames::translate(const char* context, const char* sourceText, const char* /*disambiguation*/,
                            int /*n*/) const {
  // Under the names that Qt has for them.
  static constexpr std::pair<std::string_view, core::TextKey> kKeys[] = {
      {"Ctrl", "GL_KEY_CTRL"_key}, {"Shift", "GL_KEY_SHIFT"_key},   {"Return", "GL_KEY_RETURN"_key},
      {"Esc", "GL_KEY_ESC"_key},   {"Home", "GL_KEY_HOME"_key},     {"End", "GL_KEY_END"_key},
      {"PgUp", "GL_KEY_PGUP"_key}, {"PgDown", "GL_KEY_PGDOWN"_key}, {"Up", "GL_KEY_UP"_key},
      {"Down", "GL_KEY_DOWN"_key}, {"Left", "GL_KEY_LEFT"_key},     {"Right", "GL_KEY_RIGHT"_key},
  };
  if (std::string_view(context) != "QShortcut") return {};
  const auto* const key =
      std::ranges::find_if(kKeys, [sourceText](const auto& each) { return each.first == sourceText; });
  return key == std::end(kKeys) ? QString() : Caption(texts_, key->second);
}

}  // namespace varnlog::ui
