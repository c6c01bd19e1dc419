#include "legacy/JetRow.h"

#include <array>
#include <string>
#include <utility>

#include "legacy/JetValue.h"

namespace varnlog::legacy {
namespace {

// The memory of the text that the value held for the row before.
std::string& ReuseText(Value& value) {
  if (auto* text = std::get_if<std::string>(&value)) {
    text->clear();
    return *text;
  }
  return value.emplace<std::string>();
}

std::string_view AsCharacters(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

RowDecoder::RowDecoder(const JetPages& pages, const JetText& text, const JetTable& table,
                       std::vector<int> columns, Budget& budget)
    : pages_(pages),
      text_(text),
      table_(table),
      columns_(std::move(columns)),
      budget_(budget),
      isJet3_(pages.Header().IsJet3()) {}

bool RowDecoder::ReadLayout(Bytes row) {
  row_ = row;
  ByteReader reader(row);
  columnCount_ = isJet3_ ? reader.U8(0) : reader.U16(0);
  fixedAt_ = isJet3_ ? 1 : 2;
  const std::size_t maskLength = (static_cast<std::size_t>(columnCount_) + 7) / 8;
  if (row.size() < fixedAt_ + maskLength) return false;
  const std::size_t maskAt = row.size() - maskLength;
  mask_ = row.subspan(maskAt);
  variableCount_ = 0;
  starts_[0] = maskAt;
  if (!table_.hasVariableColumns) return true;
  return isJet3_ ? ReadJet3Starts(reader, maskAt) : ReadJet4Starts(reader, maskAt);
}

bool RowDecoder::ReadJet4Starts(ByteReader& reader, std::size_t maskAt) {
  if (maskAt < 4) return false;
  variableCount_ = reader.U16(maskAt - 2);
  const auto count = static_cast<std::size_t>(variableCount_);
  if (count >= starts_.size() || maskAt < fixedAt_ + 4 + 2 * count) return false;
  for (std::size_t i = 0; i <= count; ++i) starts_[i] = reader.U16(maskAt - 4 - 2 * i);
  return StartsAscend(maskAt - 4 - 2 * count);
}

// Between the count and the starts stand the columns at which a start passes the next multiple of 256, as
// many as the row has whole multiples. Where the starts themselves end before the last multiple, that entry
// takes up room but means nothing.
bool RowDecoder::ReadJet3Starts(ByteReader& reader, std::size_t maskAt) {
  if (maskAt < 2) return false;
  variableCount_ = reader.U8(maskAt - 1);
  const auto count = static_cast<std::size_t>(variableCount_);
  std::size_t jumps = (row_.size() - 1) / 256;
  if (maskAt < fixedAt_ + 2 + jumps + count) return false;
  const std::size_t firstStart = maskAt - 2 - jumps;
  const std::size_t lastStart = firstStart - count;
  if (lastStart / 256 < jumps) --jumps;
  std::size_t passed = 0;
  for (std::size_t i = 0; i <= count; ++i) {
    while (passed < jumps && reader.U8(maskAt - 2 - passed) == i) ++passed;
    starts_[i] = reader.U8(firstStart - i) + 256 * passed;
  }
  return StartsAscend(lastStart);
}

bool RowDecoder::StartsAscend(std::size_t limit) const {
  std::size_t previous = fixedAt_;
  for (std::size_t i = 0; i <= static_cast<std::size_t>(variableCount_); ++i) {
    if (starts_[i] < previous) return false;
    previous = starts_[i];
  }
  return previous <= limit;
}

bool RowDecoder::IsMasked(const JetColumn& column) const {
  const auto number = static_cast<std::size_t>(column.number);
  if (column.number >= columnCount_) return false;
  return (std::to_integer<unsigned>(mask_[number / 8]) >> (number % 8) & 1U) != 0;
}

// Leaves `stored` empty for NULL. False when the row's parts contradict each other.
bool RowDecoder::Locate(const JetColumn& column, std::optional<Bytes>& stored) const {
  stored.reset();
  if (!IsMasked(column)) return true;
  if (column.isFixed) {
    const std::size_t at = fixedAt_ + column.fixedOffset;
    const std::size_t length = StoredLength(column, isJet3_);
    if (at + length > starts_[0]) return false;
    stored = row_.subspan(at, length);
    return true;
  }
  if (column.variableIndex >= variableCount_) return false;
  const auto index = static_cast<std::size_t>(column.variableIndex);
  stored = row_.subspan(starts_[index], starts_[index + 1] - starts_[index]);
  return true;
}

std::optional<FaultKind> RowDecoder::DecodeLong(const JetColumn& column, Bytes stored, Value& value) {
  const auto bytes = LongValue(pages_, stored, budget_, piecePage_, joined_);
  if (!bytes) return FaultKind::kLongValue;
  std::string& text = ReuseText(value);
  if (column.type == ColumnType::kMemo) {
    text_.Append(*bytes, column.codePage, text);
  } else {
    text.assign(AsCharacters(*bytes));
  }
  return std::nullopt;
}

std::optional<FaultKind> RowDecoder::DecodeValue(const JetColumn& column, Bytes stored, Value& value) {
  switch (column.type) {
    case ColumnType::kText:
      text_.Append(stored, column.codePage, ReuseText(value));
      return std::nullopt;
    case ColumnType::kMemo:
    case ColumnType::kOle:
      return DecodeLong(column, stored, value);
    default:
      break;
  }
  if (IsNumberLike(column.type)) return DecodeNumber(column.type, stored, value);
  ReuseText(value).assign(AsCharacters(stored));
  return std::nullopt;
}

bool RowDecoder::Decode(Bytes row, RowPlace place, std::vector<Value>& values, bool& isWhole,
                        FaultList& faults) {
  isWhole = true;
  values.resize(columns_.size());
  bool isPossible = ReadLayout(row);
  std::optional<Bytes> stored;
  for (std::size_t i = 0; isPossible && i < columns_.size(); ++i) {
    const JetColumn& column = table_.columns[static_cast<std::size_t>(columns_[i])];
    if (column.type == ColumnType::kBoolean) {
      values[i] = IsMasked(column);
      continue;
    }
    isPossible = Locate(column, stored);
    const auto fault = stored ? DecodeValue(column, *stored, values[i]) : std::nullopt;
    if (!stored || fault) values[i] = std::monostate{};
    if (fault) faults.Add({*fault, place.page, place.row, column.name});
    isWhole = isWhole && !fault;
  }
  if (!isPossible) faults.Add({FaultKind::kRowLayout, place.page, place.row, table_.name});
  return isPossible;
}

}  // namespace varnlog::legacy
