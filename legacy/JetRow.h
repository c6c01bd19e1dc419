#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "db/dao/Field.h"
#include "legacy/Fault.h"
#include "legacy/JetLongValue.h"
#include "legacy/JetPages.h"
#include "legacy/JetTable.h"
#include "legacy/JetText.h"

namespace varnlog::legacy {

/// A value as the engine above knows it. NULL and empty text are two things. Money is an exact decimal text,
/// a replication id a text in braces; decimal and binary data are a text of their bytes. A date equal to
/// DateTime() is a date all the same, 1899-12-30, and NULL is not: only the alternative tells them apart.
using dao::Value;

/// Takes columns of one table out of its rows. A row lies in the file as
///
///   column count | fixed columns | variable columns | their ends, last first | their count | null mask
///
/// with counts and ends of two bytes in version 4 and of one byte in version 3, which adds a table of the
/// columns at which the ends pass a multiple of 256.
class RowDecoder {
 public:
  /// `columns` are indexes into table.columns; everything given must outlive the decoder.
  RowDecoder(const JetPages& pages, const JetText& text, const JetTable& table, std::vector<int> columns,
             Budget& budget);

  /// Fills `values`, one a wanted column; their memory is reused from row to row. False, and a fault, when
  /// the row's layout is damaged. A single value that cannot be read becomes NULL and a fault, and `isWhole`
  /// false.
  [[nodiscard]] bool Decode(Bytes row, RowPlace place, std::vector<Value>& values, bool& isWhole,
                            FaultList& faults);

 private:
  [[nodiscard]] bool ReadLayout(Bytes row);
  [[nodiscard]] bool ReadJet3Starts(ByteReader& reader, std::size_t maskAt);
  [[nodiscard]] bool ReadJet4Starts(ByteReader& reader, std::size_t maskAt);
  [[nodiscard]] bool StartsAscend(std::size_t limit) const;
  [[nodiscard]] bool IsMasked(const JetColumn& column) const;
  [[nodiscard]] bool Locate(const JetColumn& column, std::optional<Bytes>& stored) const;
  [[nodiscard]] std::optional<FaultKind> DecodeValue(const JetColumn& column, Bytes stored, Value& value);
  [[nodiscard]] std::optional<FaultKind> DecodeLong(const JetColumn& column, Bytes stored, Value& value);

  const JetPages& pages_;
  const JetText& text_;
  const JetTable& table_;
  std::vector<int> columns_;
  Budget& budget_;
  bool isJet3_;
  PageBuffer piecePage_;
  std::vector<std::byte> joined_;

  // Of the row at hand. A row knows the columns that there were when it was written.
  Bytes row_;
  Bytes mask_;
  int columnCount_ = 0;
  int variableCount_ = 0;
  std::size_t fixedAt_ = 0;
  std::array<std::size_t, 257> starts_{};  // of the variable columns, and behind the last one its end
};

}  // namespace varnlog::legacy
