#include "db/dao/sqlite/rows/DifferentRows.h"

#include <cstring>

#include <sqlite3.h>

namespace varnlog::dao {
namespace {

using Length = std::uint32_t;
constexpr Length kNull = 0xFFFFFFFF;

/// How many rows are read while the memory for one arrives.
constexpr std::size_t kRowsBetween = 6;
constexpr std::size_t kMostPending = 32;

}  // namespace

void DifferentRows::Take(int count, sqlite3_value** values) {
  if (TooMany()) return;
  columns_ = static_cast<std::size_t>(count);
  Append(count, values);
  rows_.Aim(pending_.back().hash);
  if (pending_.size() > kRowsBetween) rows_.Approach(pending_[pending_.size() - 1 - kRowsBetween].hash);
  if (pending_.size() == kMostPending) TakePending();
}

void DifferentRows::Append(int count, sqlite3_value** values) {
  const std::size_t begin = size_;
  std::size_t head = begin;
  std::size_t end = head + static_cast<std::size_t>(count) * sizeof(Length);
  if (bytes_.size() < end) bytes_.resize(end * 2);
  for (int i = 0; i < count; ++i, head += sizeof(Length)) {
    const unsigned char* const text = sqlite3_value_text(values[i]);
    const auto size = text == nullptr ? Length{0} : static_cast<Length>(sqlite3_value_bytes(values[i]));
    const Length length = text == nullptr ? kNull : size;
    if (bytes_.size() < end + size) bytes_.resize((end + size) * 2);
    std::memcpy(bytes_.data() + head, &length, sizeof length);
    if (size > 0) std::memcpy(bytes_.data() + end, text, size);
    end += size;
  }
  size_ = end;
  pending_.push_back({end, ValueDictionary::HashOf({bytes_.data() + begin, end - begin})});
}

void DifferentRows::TakePending() {
  std::size_t begin = 0;
  for (const Pending& row : pending_) {
    rows_.Intern(std::string_view(bytes_.data() + begin, row.end - begin), row.hash);
    begin = row.end;
  }
  pending_.clear();
  size_ = 0;
}

void DifferentRows::Get(std::size_t row, RowTexts& texts) const {
  const std::string_view key = rows_.At(static_cast<std::uint32_t>(row));
  texts.assign(columns_, std::nullopt);
  std::size_t begin = columns_ * sizeof(Length);
  for (std::size_t i = 0; i < columns_; ++i) {
    Length length = 0;
    std::memcpy(&length, key.data() + i * sizeof length, sizeof length);
    if (length == kNull) continue;
    texts[i] = key.substr(begin, length);
    begin += length;
  }
}

}  // namespace varnlog::dao
