#include "logview/Tally.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "intake/CodeMappings.h"
#include "logview/MeasuredValue.h"

namespace varnlog::logview {

void Retakes::Add(std::string_view retake) {
  ++exposures;
  if (retake.empty()) return;
  if (retake == intake::kRepeatCode) ++repeats;
  if (retake == intake::kNotDiagnosticCode) ++notDiagnostic;
}

std::optional<double> Doses::Add(std::string_view stored) {
  if (stored.empty()) {
    ++empty_;
    return std::nullopt;
  }
  auto found = known_.find(stored);
  if (found == known_.end()) {
    const auto read = ReadMeasured(stored);
    if (read) decimals_ = std::max(decimals_, read->decimals);
    found = known_.emplace(stored, Known{read ? std::optional(read->value) : std::nullopt}).first;
  }
  Known& known = found->second;
  ++known.count;
  ++(known.value ? values_ : unread_);
  sum_ += known.value.value_or(0);
  return known.value;
}

std::optional<Quartiles> Doses::Spread() const {
  if (values_ == 0) return std::nullopt;
  std::vector<std::pair<double, std::int64_t>> sorted;
  for (const auto& [text, known] : known_) {
    if (known.value) sorted.emplace_back(*known.value, known.count);
  }
  std::ranges::sort(sorted);
  const auto at = [&sorted](std::int64_t place) {
    std::int64_t before = 0;
    for (const auto& [value, count] : sorted) {
      before += count;
      if (place < before) return value;
    }
    return sorted.back().first;
  };
  const auto quantile = [&](std::int64_t quarters) {
    const std::int64_t fourfold = (values_ - 1) * quarters;
    const double part = static_cast<double>(fourfold % 4) / 4;
    return at(fourfold / 4) * (1 - part) + at(fourfold / 4 + (part > 0 ? 1 : 0)) * part;
  };
  return Quartiles{quantile(1), quantile(2), quantile(3)};
}

ExposureScan::ExposureScan(dao::Database& log, std::vector<std::string> fields,
                           std::span<const std::int64_t> exposures)
    : log_(log), fields_(std::move(fields)), wanted_({exposures.begin(), exposures.end()}) {
  fields_.emplace_back("tXrayCulIntIDPk");
  next_ = wanted_.From(0);
}

bool ExposureScan::Read(std::int64_t rows, const std::function<void(const Row&)>& take) {
  if (!next_) return true;
  const std::int64_t last = *next_ + rows - 1;
  const auto scan = log_.Scan("TXray", fields_, {.first = *next_, .last = last});
  while (scan->Next()) {
    if (wanted_.Contains(scan->Values().back().integer)) take(scan->Values());
  }
  // Numbers may lie far apart: what lies between two rows is jumped over.
  next_ = wanted_.From(last + 1);
  return !next_;
}

Tally::Tally(dao::Database& log, std::span<const std::int64_t> exposures)
    : scan_(log, {"tXraySDiagRetry", "tXraySDose"}, exposures) {}

bool Tally::Read(std::int64_t rows) {
  return scan_.Read(rows, [this](const ExposureScan::Row& row) {
    retakes_.Add(row[0].text);
    (void)doses_.Add(row[1].text);
  });
}

}  // namespace varnlog::logview
