#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "legacy/Fault.h"
#include "legacy/JetPages.h"
#include "legacy/JetText.h"

namespace varnlog::legacy {

enum class ColumnType : std::uint8_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kMoney = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kNumeric = 16,
};

struct JetColumn {
  std::string name;
  ColumnType type = ColumnType::kText;
  int size = 0;  // kText: most characters (UTF-16 units in version 4); otherwise bytes
  bool isCounter = false;

  // Where a row keeps it.
  int number = 0;        // its bit in the null mask
  bool isFixed = false;  // at fixedOffset, else the variableIndex-th of the variable ones
  std::size_t fixedOffset = 0;
  int variableIndex = 0;
  int codePage = 0;  // 0: the file's
};

/// The indexes that belong to relations between tables are left out.
struct JetIndex {
  std::string name;
  std::vector<int> columns;  // indexes into JetTable::columns
  bool isPrimary = false;
  bool isUnique = false;
};

/// A table as its definition page tells it.
struct JetTable {
  std::string name;
  std::uint32_t definitionPage = 0;
  std::vector<JetColumn> columns;  // in the order of their definition
  /// None when the list of them is damaged: rows are read without indexes.
  std::vector<JetIndex> indexes;
  bool hasVariableColumns = false;
  std::uint32_t declaredRows = 0;
  /// The id given last, also when its row is gone; 0 before the first. The next row gets the one after it.
  std::uint32_t lastId = 0;

  /// Letter case is ignored; nullptr when there is none of that name.
  [[nodiscard]] const JetColumn* Column(std::string_view columnName) const;
  /// -1 when there is none of that name.
  [[nodiscard]] int ColumnIndex(std::string_view columnName) const;
};

/// Fails with kPageMissing, kPageType or kDefinition.
[[nodiscard]] Result<JetTable> ReadTable(const JetPages& pages, const JetText& text, std::uint32_t page);

/// ASCII letters compared without regard to case, as names of tables and columns are.
[[nodiscard]] bool SameName(std::string_view a, std::string_view b);

}  // namespace varnlog::legacy
