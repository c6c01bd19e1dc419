#include "db/dao/rows/TextOrder.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace varnlog::dao {
namespace {

/// Beyond this the storage's sorter, which can use the disk, is the better one.
constexpr std::size_t kMostDictionaryBytes = 16U << 20U;
constexpr std::size_t kRowsBetweenChecks = 4096;

/// Grows by a quarter instead of to the double: of a million rows a half-empty array would be most of the
/// memory.
template <typename T>
void Push(std::vector<T>& values, T value) {
  if (values.size() == values.capacity()) values.reserve(values.size() + values.size() / 4 + 1024);
  values.push_back(value);
}

}  // namespace

TextOrder::TextOrder(const std::vector<Term>& terms, std::size_t expectedRows) {
  for (const Term& term : terms) {
    columns_.push_back(Column{term, {}, {}});
    columns_.back().codes.reserve(expectedRows);
  }
  ids_.reserve(expectedRows);
}

bool TextOrder::Add(std::int64_t id, std::span<const std::optional<std::string_view>> values) {
  if (!ids_.empty() && id < ids_.back()) ascendingIds_ = false;
  Push(ids_, id);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Push(columns_[i].codes, values[i] ? columns_[i].values.Intern(*values[i]) : kNull);
  }
  return ids_.size() % kRowsBetweenChecks != 0 || StaysSmall();
}

bool TextOrder::StaysSmall() const {
  std::size_t bytes = 0;
  for (const Column& column : columns_) bytes += column.values.Bytes();
  return bytes <= kMostDictionaryBytes;
}

std::vector<std::int64_t> TextOrder::Finish() {
  std::vector<std::uint32_t> rows = RowsById();
  // From the last term to the first, each pass keeping the order of the passes before it.
  while (!columns_.empty()) {
    rows = CountIntoPlace(columns_.back(), rows);
    columns_.pop_back();
  }
  std::vector<std::int64_t> sorted(rows.size());
  std::transform(rows.begin(), rows.end(), sorted.begin(), [this](std::uint32_t row) { return ids_[row]; });
  ids_ = {};
  return sorted;
}

std::vector<std::uint32_t> TextOrder::RowsById() const {
  std::vector<std::uint32_t> rows(ids_.size());
  std::iota(rows.begin(), rows.end(), 0U);
  if (!ascendingIds_) {
    std::sort(rows.begin(), rows.end(),
              [this](std::uint32_t a, std::uint32_t b) { return ids_[a] < ids_[b]; });
  }
  if (!columns_.empty() && columns_.back().term.descending) std::reverse(rows.begin(), rows.end());
  return rows;
}

std::vector<std::uint32_t> TextOrder::CountIntoPlace(const Column& column,
                                                     const std::vector<std::uint32_t>& rows) {
  const std::vector<std::uint32_t> ranks = RankValues(column.values, column.term.collated);
  const std::uint32_t places =
      (ranks.empty() ? 0 : *std::max_element(ranks.begin(), ranks.end()) + 1) + 1;  // and one for NULL
  const auto placeOf = [&](std::uint32_t row) {
    const std::uint32_t code = column.codes[row];
    const std::uint32_t ascending = code == kNull ? 0 : ranks[code] + 1;
    return column.term.descending ? places - 1 - ascending : ascending;
  };
  std::vector<std::uint32_t> next(places + 1);
  for (std::uint32_t row = 0; row < rows.size(); ++row) ++next[placeOf(row) + 1];
  std::partial_sum(next.begin(), next.end(), next.begin());
  std::vector<std::uint32_t> placed(rows.size());
  for (const std::uint32_t row : rows) placed[next[placeOf(row)]++] = row;
  return placed;
}

}  // namespace varnlog::dao
