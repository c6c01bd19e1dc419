#include "logview/Suggestions.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include "db/dao/TableScan.h"

namespace varnlog::logview {

std::vector<std::string> SuggestionsFor(dao::Database& log, const std::string& field) {
  constexpr std::int64_t kLatest = 5'000;
  constexpr std::size_t kMost = 200;
  const std::vector<std::string> fields = {field};
  const auto scan =
      log.Scan("TXray", fields, {.first = log.Greatest("TXray", "tXrayCulIntIDPk") - kLatest + 1});
  std::map<std::string, std::int64_t, std::less<>> counts;
  while (scan->Next()) {
    if (const std::string_view text = scan->Values()[0].text; !text.empty()) ++counts[std::string(text)];
  }
  std::vector<std::pair<std::int64_t, std::string>> sorted;
  for (const auto& [text, count] : counts) sorted.emplace_back(-count, text);
  std::ranges::sort(sorted);
  if (sorted.size() > kMost) sorted.resize(kMost);
  std::vector<std::string> suggestions;
  for (auto& [count, text] : sorted) suggestions.push_back(std::move(text));
  return suggestions;
}

}  // namespace varnlog::logview
