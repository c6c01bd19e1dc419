#include "logview/Plausibility.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "db/dao/TableScan.h"
#include "logview/MeasuredValue.h"

namespace varnlog::logview {

namespace {

constexpr std::size_t kLatest = 1'000;
constexpr std::size_t kTooFew = 20;
constexpr std::int64_t kRowsLookedAt = 30'000;  // rare types need not be found in all of a large log

struct Known {
  double value;
  std::string text;
};

}  // namespace

std::optional<Implausible> WhyImplausible(dao::Database& log, std::string_view type, const std::string& field,
                                          std::string_view entry) {
  if (entry.empty()) return std::nullopt;
  const auto number = ReadMeasured(entry);
  if (!number) return Implausible{.isNoNumber = true};
  const std::vector<std::string> fields = {"tXraySType", field};
  const auto scan =
      log.Scan("TXray", fields, {.first = log.Greatest("TXray", "tXrayCulIntIDPk") - kRowsLookedAt + 1});
  std::deque<Known> latest;
  while (scan->Next()) {
    if (scan->Values()[0].text != type) continue;
    const std::string_view text = scan->Values()[1].text;
    const auto known = ReadMeasured(text);
    if (!known) continue;
    latest.push_back({known->value, std::string(text)});
    if (latest.size() > kLatest) latest.pop_front();
  }
  if (latest.size() < kTooFew) return std::nullopt;
  const auto [least, greatest] = std::ranges::minmax_element(latest, {}, &Known::value);
  if (number->value >= least->value && number->value <= greatest->value) return std::nullopt;
  return Implausible{.least = least->text, .greatest = greatest->text};
}

}  // namespace varnlog::logview
