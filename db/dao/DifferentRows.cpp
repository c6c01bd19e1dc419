#include "db/dao/DifferentRows.h"

#include <array>
#include <cstring>

#include <sqlite3.h>

namespace varnlog::dao {
namespace {

using Length = std::uint32_t;
constexpr Length kNull = 0xFFFFFFFF;

/// Copies a short text without a call and with few branches: so many bytes at a time, the last of which may
/// overlap the ones before.
void CopyText(const unsigned char* text, std::size_t size, char* to) {
  if (size >= 8) {
    for (std::size_t at = 0; at + 8 < size; at += 8) std::memcpy(to + at, text + at, 8);
    std::memcpy(to + size - 8, text + size - 8, 8);
  } else if (size >= 4) {
    std::memcpy(to, text, 4);
    std::memcpy(to + size - 4, text + size - 4, 4);
  } else {
    for (std::size_t i = 0; i < size; ++i) to[i] = static_cast<char>(text[i]);
  }
}

}  // namespace

void DifferentRows::Take(int count, sqlite3_value** values) {
  if (TooMany()) return;
  columns_ = static_cast<std::size_t>(count);
  Append(count, values);
  if (pendingEnds_.size() == ValueDictionary::kBatch) TakePending();
}

void DifferentRows::Append(int count, sqlite3_value** values) {
  std::size_t head = pendingSize_;
  std::size_t end = head + static_cast<std::size_t>(count) * sizeof(Length);
  if (pending_.size() < end) pending_.resize(end * 2);
  for (int i = 0; i < count; ++i, head += sizeof(Length)) {
    const unsigned char* const text = sqlite3_value_text(values[i]);
    const auto size = text == nullptr ? Length{0} : static_cast<Length>(sqlite3_value_bytes(values[i]));
    const Length length = text == nullptr ? kNull : size;
    if (pending_.size() < end + size) pending_.resize((end + size) * 2);
    std::memcpy(pending_.data() + head, &length, sizeof length);
    CopyText(text, size, pending_.data() + end);
    end += size;
  }
  pendingSize_ = end;
  pendingEnds_.push_back(end);
}

void DifferentRows::TakePending() {
  std::array<std::string_view, ValueDictionary::kBatch> rows;
  std::array<std::uint32_t, ValueDictionary::kBatch> codes{};
  std::size_t begin = 0;
  for (std::size_t i = 0; i < pendingEnds_.size(); ++i) {
    rows[i] = std::string_view(pending_.data() + begin, pendingEnds_[i] - begin);
    begin = pendingEnds_[i];
  }
  rows_.InternAll(std::span(rows).first(pendingEnds_.size()), codes.data());
  pendingEnds_.clear();
  pendingSize_ = 0;
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
