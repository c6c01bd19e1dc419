#include "db/dao/sqlite/PageScan.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"

namespace varnlog::dao {

namespace {

constexpr char kPageOfRows = 13;
constexpr std::size_t kPageHeader = 8;
constexpr std::size_t kFewestFields = 5;
// Rows from before an upgrade lack the fields that it added.
constexpr std::size_t kMostMissingFields = 2;

std::uint64_t BigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8U | static_cast<unsigned char>(byte);
  return number;
}

// Takes a row apart from front to back; every step fails rather than read beyond the page.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  [[nodiscard]] std::size_t size() const { return bytes_.size(); }

  std::optional<std::string_view> Bytes(std::uint64_t count) {
    if (count > bytes_.size()) return std::nullopt;
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  std::optional<std::uint64_t> Varint() {
    std::uint64_t number = 0;
    for (int i = 0; i < 9; ++i) {
      const auto byte = Bytes(1);
      if (!byte) return std::nullopt;
      const auto bits = static_cast<unsigned char>(byte->front());
      if (i == 8) return number << 8U | bits;
      number = number << 7U | (bits & 0x7fU);
      if (bits < 0x80) return number;
    }
    return std::nullopt;
  }

 private:
  std::string_view bytes_;
};

std::int64_t SignedNumber(std::string_view bytes) {
  const auto unused = static_cast<unsigned>(64 - 8 * bytes.size());
  return static_cast<std::int64_t>(BigEndian(bytes) << unused) >> unused;
}

// The value whose type a row's list of types gives; nothing for one that no field of ours has.
std::optional<CellView> ReadValue(std::uint64_t type, Reader& values) {
  constexpr std::size_t kNumberSizes[] = {0, 1, 2, 3, 4, 6, 8, 8};
  CellView value;
  if (type == 0) return value;
  if (type == 8 || type == 9) {
    value.kind = CellKind::kInteger;
    value.integer = static_cast<std::int64_t>(type) - 8;
    return value;
  }
  const bool isText = type >= 13 && type % 2 == 1;
  if (!isText && type > 7) return std::nullopt;
  const auto bytes = values.Bytes(isText ? (type - 13) / 2 : kNumberSizes[type]);
  if (!bytes) return std::nullopt;
  value.kind = isText ? CellKind::kText : type == 7 ? CellKind::kReal : CellKind::kInteger;
  if (isText) value.text = *bytes;
  if (value.kind == CellKind::kInteger) value.integer = SignedNumber(*bytes);
  if (value.kind == CellKind::kReal) value.real = std::bit_cast<double>(BigEndian(*bytes));
  return value;
}

std::optional<std::vector<CellView>> ReadValues(Reader row, std::size_t mostValues) {
  const std::size_t before = row.size();
  const auto listLength = row.Varint();
  if (!listLength) return std::nullopt;
  const std::size_t lengthOfLength = before - row.size();
  if (*listLength < lengthOfLength) return std::nullopt;
  const auto list = row.Bytes(*listLength - lengthOfLength);
  if (!list) return std::nullopt;
  std::vector<CellView> values;
  for (Reader types(*list); types.size() > 0;) {
    const auto type = types.Varint();
    if (!type || values.size() == mostValues) return std::nullopt;
    const auto value = ReadValue(*type, row);
    if (!value) return std::nullopt;
    values.push_back(*value);
  }
  return values;
}

bool Suits(const CellView& value, const FieldDef& field) {
  if (value.kind == CellKind::kNull) return true;
  if (field.isCounter) return false;  // stands in the row's id
  switch (field.type) {
    case FieldType::kBoolean:
      return value.kind == CellKind::kInteger && (value.integer == 0 || value.integer == 1);
    case FieldType::kLong:
      return value.kind == CellKind::kInteger;
    case FieldType::kDouble:
      return value.kind == CellKind::kInteger || value.kind == CellKind::kReal;
    case FieldType::kDate:
      return value.kind == CellKind::kText && platform::DateTime::FromIso(value.text).has_value();
    case FieldType::kText:
    case FieldType::kMemo:
      break;
  }
  return value.kind == CellKind::kText;
}

}  // namespace

bool PageScan::CanTellTable() const {
  return fields_.size() >= kFewestFields;
}

bool PageScan::IsOfTable(const std::vector<CellView>& values) const {
  if (values.size() + kMostMissingFields < fields_.size()) return false;
  return std::equal(values.begin(), values.end(), fields_.begin(), Suits);
}

void PageScan::ScanPage(std::string_view page, const Take& take) {
  if (page[0] != kPageOfRows) return;
  const std::size_t count = BigEndian(page.substr(3, 2));
  // The longest row that stands on its page as a whole.
  const std::size_t longest = page.size() - 35;
  for (std::size_t i = 0; i < count && kPageHeader + 2 * i + 2 <= page.size(); ++i) {
    const std::size_t place = BigEndian(page.substr(kPageHeader + 2 * i, 2));
    if (place >= page.size()) continue;
    Reader cell(page.substr(place));
    const auto length = cell.Varint();
    const auto rowId = cell.Varint();
    if (!length || !rowId) continue;
    if (*length > longest) {
      sawLongRows_ = true;
      continue;
    }
    const auto row = cell.Bytes(*length);
    const auto values = row ? ReadValues(Reader(*row), fields_.size()) : std::nullopt;
    if (values && IsOfTable(*values)) take(static_cast<std::int64_t>(*rowId), *values);
  }
}

bool PageScan::Run(const Take& take, const std::function<void(double)>& progress) {
  const std::string header = file_.ReadBytes(0, kHeaderSize);
  if (header.size() < kHeaderSize) return true;
  const std::uint64_t stored = BigEndian(std::string_view(header).substr(16, 2));
  const std::size_t pageSize = stored == 1 ? 65536 : stored;
  const std::size_t reserved = static_cast<unsigned char>(header[20]);
  if (pageSize < 512 || reserved + 480 > pageSize) return true;
  const std::int64_t pages = file_.FileLength() / static_cast<std::int64_t>(pageSize);
  // The first page holds no rows of a table of ours.
  for (std::int64_t number = 1; number < pages; ++number) {
    const std::string page = file_.ReadBytes(number * static_cast<std::int64_t>(pageSize), pageSize);
    if (page.size() == pageSize) ScanPage(std::string_view(page).substr(0, pageSize - reserved), take);
    progress(static_cast<double>(number) / static_cast<double>(pages));
  }
  return !sawLongRows_;
}

}  // namespace varnlog::dao
