#include "core/TextLookup.h"

#include <algorithm>

namespace varnlog::core {
namespace {

char ToUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::size_t Find(std::string_view text, std::string_view marker, std::size_t from) {
  const auto start = text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size()));
  const auto found = std::search(start, text.end(), marker.begin(), marker.end(),
                                 [](char a, char b) { return ToUpper(a) == ToUpper(b); });
  return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

std::string Marker(std::string_view name) {
  return std::string("$").append(name).append("$");
}

}  // namespace

std::string RememberedTexts::GetText(TextKey key) const {
  if (const auto known = known_.find(key.name()); known != known_.end()) return known->second;
  std::string text = texts_.GetText(key);
  if (!text.empty()) known_.emplace(key.name(), text);
  return text;
}

std::string ReplacePlaceholder(std::string_view text, std::string_view name, std::string_view value) {
  const std::string marker = Marker(name);
  // A value that holds the marker (a file may be called so) must not be searched again: there would be no
  // end.
  const std::size_t step = Find(value, marker, 0) == std::string_view::npos ? 0 : value.size();
  std::string result(text);
  std::size_t from = 0;
  for (;;) {
    const std::size_t place = Find(result, marker, from);
    if (place == std::string::npos) return result;
    result.replace(place, marker.size(), value);
    from = step == 0 ? 0 : place + step;
  }
}

std::string ReplaceFirstPlaceholder(std::string_view text, std::string_view name, std::string_view value) {
  const std::string marker = Marker(name);
  std::string result(text);
  const std::size_t place = Find(text, marker, 0);
  if (place != std::string_view::npos) result.replace(place, marker.size(), value);
  return result;
}

}  // namespace varnlog::core
