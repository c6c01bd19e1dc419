#include "legacy/JetTable.h"

#include <algorithm>

#include "platform/Ascii.h"

namespace varnlog::legacy {
namespace {

// 255 columns with names of 64 characters fill ten pages of version 4; indexes come on top.
constexpr int kMostDefinitionPages = 64;
constexpr int kMostColumns = 255;
constexpr std::uint32_t kMostIndexes = 256;
constexpr std::size_t kNextPageAt = 4;
constexpr std::size_t kPageHead = 8;  // of a page that continues a definition

// Offsets in a definition, and in a column's entry.
struct Layout {
  std::size_t rows, lastId, variableColumns, columns, realIndexes, indexEntries;
  std::size_t indexEntryLength, columnLength;
  std::size_t number, variableIndex, codePage, flags, fixedOffset, size;
  std::size_t indexes, keyLength, keyColumns, keyFlags, indexLength, keyOfIndex, kindOfIndex;
};

constexpr Layout kJet3Layout{12, 16, 0x17, 0x19, 0x1f, 0x2b, 8,  18, 1, 3, 11,
                             13, 14, 16,   0x1b, 39,   0,    38, 20, 4, 19};
constexpr Layout kJet4Layout{16, 20, 0x2b, 0x2d, 0x33, 0x3f, 12, 25, 5, 7, 0,
                             15, 21, 23,   0x2f, 52,   4,    46, 28, 8, 23};

constexpr std::uint8_t kFixedFlag = 0x01;
constexpr std::uint8_t kCounterFlag = 0x04;

constexpr std::size_t kMostKeyColumns = 10;
constexpr std::size_t kKeyColumnLength = 3;
constexpr std::uint8_t kUniqueFlag = 0x01;
constexpr std::uint8_t kPrimaryKind = 1;
constexpr std::uint8_t kRelationKind = 2;

// The definition in one piece: pages after the first carry on behind a short head.
Result<std::vector<std::byte>> JoinDefinition(const JetPages& pages, std::uint32_t first) {
  std::vector<std::byte> joined;
  PageBuffer buffer;
  std::uint32_t number = first;
  for (int i = 0; number != 0; ++i) {
    if (i == kMostDefinitionPages) return Fault{FaultKind::kDefinition, first};
    const auto page = pages.Page(number, buffer);
    if (!page) return page.Why();
    ByteReader reader(*page);
    if (reader.U8(0) != static_cast<std::uint8_t>(PageType::kDefinition)) {
      return Fault{FaultKind::kPageType, number};
    }
    joined.insert(joined.end(), page->begin() + (i == 0 ? 0 : kPageHead), page->end());
    number = reader.U32(kNextPageAt);
  }
  return joined;
}

class DefinitionReader {
 public:
  DefinitionReader(Bytes definition, bool isJet3, const JetText& text)
      : reader_(definition), isJet3_(isJet3), layout_(isJet3 ? kJet3Layout : kJet4Layout), text_(text) {}

  // False when the definition cannot be.
  bool Read(JetTable& table) {
    table.declaredRows = reader_.U32(layout_.rows);
    table.lastId = reader_.U32(layout_.lastId);
    table.hasVariableColumns = reader_.U16(layout_.variableColumns) != 0;
    const int columns = reader_.U16(layout_.columns);
    const std::uint32_t indexes = reader_.U32(layout_.realIndexes);
    if (columns > kMostColumns || indexes > kMostIndexes) return false;
    std::size_t at = layout_.indexEntries + indexes * layout_.indexEntryLength;
    for (int i = 0; i < columns; ++i, at += layout_.columnLength) table.columns.push_back(Column(at));
    for (JetColumn& column : table.columns) column.name = Name(at);
    const bool isPossible =
        !reader_.Overran() && std::all_of(table.columns.begin(), table.columns.end(), IsPossible);
    if (isPossible) ReadIndexes(table, at, indexes);
    return isPossible;
  }

 private:
  JetColumn Column(std::size_t at) {
    JetColumn column;
    column.type = static_cast<ColumnType>(reader_.U8(at));
    column.number = reader_.U16(at + layout_.number);
    column.variableIndex = reader_.U16(at + layout_.variableIndex);
    if (isJet3_) column.codePage = reader_.U16(at + layout_.codePage);
    const std::uint8_t flags = reader_.U8(at + layout_.flags);
    column.isFixed = (flags & kFixedFlag) != 0;
    column.isCounter = (flags & kCounterFlag) != 0 && column.type == ColumnType::kLong;
    column.fixedOffset = reader_.U16(at + layout_.fixedOffset);
    column.size = reader_.U16(at + layout_.size);
    if (!isJet3_ && column.type == ColumnType::kText) column.size /= 2;
    return column;
  }

  // Behind the columns stand the keys in which rows are sorted, then the indexes, each of which uses one of
  // the keys, then the names of the indexes.
  void ReadIndexes(JetTable& table, std::size_t keysAt, std::uint32_t keys) {
    const std::uint32_t count = reader_.U32(layout_.indexes);
    if (count > kMostIndexes) return;
    const std::size_t indexesAt = keysAt + keys * layout_.keyLength;
    std::size_t namesAt = indexesAt + count * layout_.indexLength;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::size_t at = indexesAt + i * layout_.indexLength;
      const std::uint32_t key = reader_.U32(at + layout_.keyOfIndex);
      JetIndex index{.name = Name(namesAt), .columns = {}};
      if (key < keys) ReadKey(table, keysAt + key * layout_.keyLength, index);
      const std::uint8_t kind = reader_.U8(at + layout_.kindOfIndex);
      index.isPrimary = kind == kPrimaryKind;
      if (kind != kRelationKind && !index.columns.empty()) table.indexes.push_back(std::move(index));
    }
    if (reader_.Overran()) table.indexes.clear();
  }

  void ReadKey(const JetTable& table, std::size_t at, JetIndex& index) {
    for (std::size_t i = 0; i < kMostKeyColumns; ++i) {
      const std::uint16_t number = reader_.U16(at + layout_.keyColumns + i * kKeyColumnLength);
      const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                       [&](const JetColumn& each) { return each.number == number; });
      if (column != table.columns.end())
        index.columns.push_back(static_cast<int>(column - table.columns.begin()));
    }
    index.isUnique = (reader_.U8(at + layout_.keyFlags) & kUniqueFlag) != 0;
  }

  // Names follow one another behind the columns: a length in bytes, then the text.
  std::string Name(std::size_t& at) {
    const std::size_t length = isJet3_ ? reader_.U8(at) : reader_.U16(at);
    at += isJet3_ ? 1 : 2;
    std::string name = text_.Decode(reader_.Slice(at, length));
    at += length;
    return name;
  }

  static bool IsPossible(const JetColumn& column) {
    return column.number <= kMostColumns && column.variableIndex <= kMostColumns && !column.name.empty();
  }

  ByteReader reader_;
  bool isJet3_;
  const Layout& layout_;
  const JetText& text_;
};

}  // namespace

bool SameName(std::string_view a, std::string_view b) {
  return platform::ascii::SameLetters(a, b);
}

const JetColumn* JetTable::Column(std::string_view columnName) const {
  const int index = ColumnIndex(columnName);
  return index < 0 ? nullptr : &columns[static_cast<std::size_t>(index)];
}

int JetTable::ColumnIndex(std::string_view columnName) const {
  const auto found = std::find_if(columns.begin(), columns.end(),
                                  [&](const JetColumn& column) { return SameName(column.name, columnName); });
  return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

Result<JetTable> ReadTable(const JetPages& pages, const JetText& text, std::uint32_t page) {
  const auto definition = JoinDefinition(pages, page);
  if (!definition) return definition.Why();
  JetTable table;
  table.definitionPage = page;
  if (!DefinitionReader(*definition, pages.Header().IsJet3(), text).Read(table)) {
    return Fault{FaultKind::kDefinition, page};
  }
  return table;
}

}  // namespace varnlog::legacy
