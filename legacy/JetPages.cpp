#include "legacy/JetPages.h"

#include <algorithm>
#include <tuple>

#include "legacy/Rc4.h"

namespace varnlog::legacy {
namespace {

// Pages are named with three bytes.
constexpr std::uint64_t kMostPages = 0x1000000;
constexpr std::size_t kOwnerAt = 4;

constexpr std::uint16_t kSkipFlag = 0x8000;
constexpr std::uint16_t kPointerFlag = 0x4000;
constexpr std::uint16_t kOffsetMask = 0x1fff;

}  // namespace

JetPages::JetPages(Bytes file, const JetHeader& header)
    : file_(file),
      header_(header),
      count_(static_cast<std::uint32_t>(std::min<std::uint64_t>(file.size() / header.pageSize, kMostPages))) {
  ListDataPages();
}

Bytes JetPages::Stored(std::uint32_t number) const {
  return file_.subspan(std::size_t{number} * header_.pageSize, header_.pageSize);
}

void JetPages::Decode(std::uint32_t number, std::span<std::byte> target) const {
  Rc4(header_.encodingKey ^ number).Apply(Stored(number), target);
}

Result<Bytes> JetPages::Page(std::uint32_t number, PageBuffer& buffer) const {
  if (number == 0 || number >= count_) return Fault{FaultKind::kPageMissing, number};
  if (!header_.IsEncoded()) return Stored(number);
  const auto target = std::span(buffer.bytes).first(header_.pageSize);
  if (buffer.number != number) Decode(number, target);
  buffer.number = number;
  return Bytes(target);
}

void JetPages::ListDataPages() {
  std::array<std::byte, 8> decoded{};
  for (std::uint32_t number = 1; number < count_; ++number) {
    Bytes head = Stored(number).first(decoded.size());
    if (header_.IsEncoded()) {
      Decode(number, decoded);
      head = decoded;
    }
    ByteReader reader(head);
    if (reader.U8(0) == static_cast<std::uint8_t>(PageType::kData)) {
      dataPages_.push_back({reader.U32(kOwnerAt), number});
    }
  }
  std::sort(dataPages_.begin(), dataPages_.end(), [](const DataPage& a, const DataPage& b) {
    return std::tie(a.owner, a.page) < std::tie(b.owner, b.page);
  });
}

std::vector<std::uint32_t> JetPages::DataPagesOf(std::uint32_t owner) const {
  const auto first =
      std::lower_bound(dataPages_.begin(), dataPages_.end(), owner,
                       [](const DataPage& page, std::uint32_t key) { return page.owner < key; });
  std::vector<std::uint32_t> numbers;
  for (auto page = first; page != dataPages_.end() && page->owner == owner; ++page) {
    numbers.push_back(page->page);
  }
  return numbers;
}

DataPage::DataPage(Bytes page, std::uint32_t number, bool isJet3)
    : page_(page), number_(number), tableAt_(isJet3 ? 10 : 14) {
  rowCount_ = ByteReader(page_).U16(tableAt_ - 2);
}

Result<DataPage> DataPage::Open(const JetPages& pages, std::uint32_t number, std::uint32_t owner,
                                PageBuffer& buffer) {
  const auto page = pages.Page(number, buffer);
  if (!page) return page.Why();
  ByteReader reader(*page);
  if (reader.U8(0) != static_cast<std::uint8_t>(PageType::kData)) return Fault{FaultKind::kPageType, number};
  if (reader.U32(kOwnerAt) != owner) return Fault{FaultKind::kPageOwner, number};
  const DataPage result(*page, number, pages.Header().IsJet3());
  if (result.tableAt_ + 2 * static_cast<std::size_t>(result.rowCount_) > page->size()) {
    return Fault{FaultKind::kRowTable, number};
  }
  return result;
}

std::uint16_t DataPage::Offset(int row) const {
  return ByteReader(page_).U16(tableAt_ + 2 * static_cast<std::size_t>(row));
}

bool DataPage::IsSkipped(int row) const {
  return (Offset(row) & kSkipFlag) != 0;
}

// Rows fill a page from its end; a row reaches to where the one before it begins.
Result<RowSlot> DataPage::Slot(int row) const {
  const Fault fault{FaultKind::kRowTable, number_, row};
  if (row < 0 || row >= rowCount_) return fault;
  const std::uint16_t entry = Offset(row);
  const std::size_t start = entry & kOffsetMask;
  const std::size_t end = row == 0 ? page_.size() : std::size_t{Offset(row - 1)} & kOffsetMask;
  const std::size_t tableEnd = tableAt_ + 2 * static_cast<std::size_t>(rowCount_);
  if (start < tableEnd || start > end || end > page_.size()) return fault;
  return RowSlot{(entry & kSkipFlag) != 0, (entry & kPointerFlag) != 0, page_.subspan(start, end - start)};
}

RowPlace PlaceFrom(std::uint32_t pointer) {
  return {pointer >> 8U, static_cast<int>(pointer & 0xffU)};
}

}  // namespace varnlog::legacy
