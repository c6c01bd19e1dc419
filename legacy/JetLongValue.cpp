#include "legacy/JetLongValue.h"

namespace varnlog::legacy {
namespace {

constexpr std::size_t kHeadLength = 12;
constexpr std::uint32_t kLengthMask = 0x3fffffff;
constexpr std::uint32_t kInlineFlag = 0x80000000;
constexpr std::uint32_t kSinglePieceFlag = 0x40000000;
// Pages of long values name no table: their owner is the text "LVAL".
constexpr std::uint32_t kLongValueOwner = 0x4c41564c;

std::optional<Bytes> Piece(const JetPages& pages, std::uint32_t pointer, PageBuffer& buffer) {
  const RowPlace place = PlaceFrom(pointer);
  const auto page = DataPage::Open(pages, place.page, kLongValueOwner, buffer);
  if (!page) return std::nullopt;
  const auto slot = page->Slot(place.row);
  if (!slot || slot->isSkipped || slot->isPointer) return std::nullopt;
  return slot->bytes;
}

// Every piece adds at least a byte and none may lead beyond `length`, so that a circle ends.
std::optional<Bytes> JoinChain(const JetPages& pages, std::uint32_t pointer, std::size_t length,
                               PageBuffer& buffer, std::vector<std::byte>& joined) {
  joined.clear();
  while (pointer != 0) {
    const auto piece = Piece(pages, pointer, buffer);
    if (!piece || piece->size() <= 4 || joined.size() + piece->size() - 4 > length) return std::nullopt;
    pointer = ByteReader(*piece).U32(0);
    joined.insert(joined.end(), piece->begin() + 4, piece->end());
  }
  if (joined.size() != length) return std::nullopt;
  return Bytes(joined);
}

}  // namespace

std::optional<Bytes> LongValue(const JetPages& pages, Bytes head, Budget& budget, PageBuffer& buffer,
                               std::vector<std::byte>& joined) {
  ByteReader reader(head);
  const std::uint32_t kind = reader.U32(0);
  const std::uint32_t pointer = reader.U32(4);
  const std::size_t length = kind & kLengthMask;
  if (head.size() < kHeadLength || length > kLongestValue) return std::nullopt;
  if (length == 0) return Bytes{};
  if (!budget.Spend(length)) return std::nullopt;
  if ((kind & kInlineFlag) != 0) {
    const Bytes value = reader.Slice(kHeadLength, length);
    return reader.Overran() ? std::nullopt : std::optional(value);
  }
  if ((kind & kSinglePieceFlag) == 0) return JoinChain(pages, pointer, length, buffer, joined);
  const auto piece = Piece(pages, pointer, buffer);
  if (!piece || piece->size() < length) return std::nullopt;
  return piece->first(length);
}

}  // namespace varnlog::legacy
