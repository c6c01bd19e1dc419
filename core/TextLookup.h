#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace varnlog::core {

/// The key of a text in the language database, such as "MN_CAPTION". Written in code as "MN_CAPTION"_key,
/// which does not compile for a text that cannot be a key.
class TextKey {
 public:
  constexpr explicit TextKey(std::string_view name) : name_(name) {}
  [[nodiscard]] constexpr std::string_view name() const { return name_; }
  friend constexpr bool operator==(TextKey, TextKey) = default;

 private:
  std::string_view name_;
};

inline namespace literals {
consteval TextKey operator""_key(const char* text, std::size_t length) {
  const std::string_view name(text, length);
  bool hasPrefix = false;
  for (std::size_t i = 0; i < length; ++i) {
    const char c = name[i];
    if (c == '_' && i >= 2) hasPrefix = true;
    const bool allowed = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    if (!allowed) throw "a text key is made of upper-case letters, digits and '_'";
  }
  if (!hasPrefix) throw "a text key begins with the prefix of the window that uses it";
  return TextKey(name);
}
}  // namespace literals

/// Texts in the current language.
class TextLookup {
 public:
  virtual ~TextLookup() = default;
  /// The text with its line breaks (a carriage return each) and tabs in place; "" for a key without a text.
  [[nodiscard]] virtual std::string GetText(TextKey key) const = 0;
};

/// Looks each text up once, for rows that ask for the same few again and again. Of use as long as the
/// language stays the same; a text that is missing is looked up every time.
class RememberedTexts final : public TextLookup {
 public:
  explicit RememberedTexts(const TextLookup& texts) : texts_(texts) {}
  [[nodiscard]] std::string GetText(TextKey key) const override;

 private:
  const TextLookup& texts_;
  mutable std::map<std::string, std::string, std::less<>> known_;
};

/// Every occurrence of $name$ in `text`, letter case of the name ignored, replaced by `value`. A value that
/// holds the marker itself is put in as it is.
[[nodiscard]] std::string ReplacePlaceholder(std::string_view text, std::string_view name,
                                             std::string_view value);
/// The first occurrence only.
[[nodiscard]] std::string ReplaceFirstPlaceholder(std::string_view text, std::string_view name,
                                                  std::string_view value);

/// What stands for $name$ in a text; letter case of the name is ignored.
struct Placeholder {
  std::string_view name;
  std::string value;
};
using Placeholders = std::vector<Placeholder>;

/// `text` with every placeholder that is given replaced. A value is put in as it is and not searched again: a
/// file or a patient may be called like a placeholder.
[[nodiscard]] std::string FillPlaceholders(std::string_view text, const Placeholders& values);

/// The text of a key, filled.
[[nodiscard]] std::string FilledText(const TextLookup& texts, TextKey key, const Placeholders& values);

}  // namespace varnlog::core
