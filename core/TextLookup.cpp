#include "core/TextLookup.h"

#include <algorithm>
#include <vector>

#include "core/Numbers.h"
#include "platform/Ascii.h"

namespace varnlog::core {
namespace {

std::size_t Find(std::string_view text, std::string_view marker, std::size_t from) {
  const auto start = text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size()));
  const auto found = std::search(start, text.end(), marker.begin(), marker.end(), [](char a, char b) {
    return platform::ascii::Upper(a) == platform::ascii::Upper(b);
  });
  return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

std::string Marker(std::string_view name) {
  return std::string("$").append(name).append("$");
}

/// The value whose marker `text` begins with, or nullptr.
const Placeholder* MarkedAt(std::string_view text, const Placeholders& values) {
  for (const Placeholder& candidate : values) {
    const std::string marker = Marker(candidate.name);
    if (Find(text.substr(0, marker.size()), marker, 0) == 0) return &candidate;
  }
  return nullptr;
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
  if (Find(text, marker, 0) == std::string_view::npos) return std::string(text);
  // A value that holds the marker (a file may be called so) must not be searched again: there would be no
  // end. Any other may make a marker together with what stands beside it.
  const bool isSearched = Find(value, marker, 0) == std::string_view::npos;
  std::string result;
  std::size_t searchedFrom = 0;
  std::vector<std::string_view> pending = {text};
  while (!pending.empty()) {
    std::string_view& next = pending.back();
    if (next.empty()) {
      pending.pop_back();
      continue;
    }
    result += next.front();
    next.remove_prefix(1);
    if (result.back() != '$' || result.size() - searchedFrom < marker.size()) continue;
    const std::size_t place = result.size() - marker.size();
    if (Find(result, marker, place) != place) continue;
    result.resize(place);
    if (isSearched) {
      pending.push_back(value);
    } else {
      result += value;
      searchedFrom = result.size();
    }
  }
  return result;
}

std::string ReplaceFirstPlaceholder(std::string_view text, std::string_view name, std::string_view value) {
  const std::string marker = Marker(name);
  std::string result(text);
  const std::size_t place = Find(text, marker, 0);
  if (place != std::string_view::npos) result.replace(place, marker.size(), value);
  return result;
}

std::string FillPlaceholders(std::string_view text, const Placeholders& values) {
  std::string result;
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find('$'), text.size());
    result.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) break;
    const Placeholder* const filled = MarkedAt(text, values);
    result.append(filled != nullptr ? std::string_view(filled->value) : text.substr(0, 1));
    text.remove_prefix(filled != nullptr ? filled->name.size() + 2 : 1);
  }
  return result;
}

std::string Grouped(const TextLookup& texts, std::string_view number) {
  constexpr std::size_t kGroup = 3;
  std::string result(number);
  const bool digits = std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; });
  if (!digits || number.size() <= kGroup) return result;
  const std::string separator = texts.GetText("GL_THOUSANDS"_key);
  for (std::size_t place = number.size() - kGroup; place > 0; place -= std::min(place, kGroup)) {
    result.insert(place, separator);
  }
  return result;
}

std::string FilledText(const TextLookup& texts, TextKey key, const Placeholders& values) {
  Placeholders filled = values;
  for (Placeholder& each : filled) {
    if (each.name.starts_with("lng")) each.value = Grouped(texts, each.value);
  }
  return FillPlaceholders(texts.GetText(key), filled);
}

}  // namespace varnlog::core
