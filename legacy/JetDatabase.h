#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "legacy/Fault.h"
#include "legacy/JetPages.h"
#include "legacy/JetRow.h"
#include "legacy/JetTable.h"
#include "legacy/JetText.h"

namespace varnlog::legacy {

/// One row as it is handed to a visitor; it lives until the visitor returns.
struct JetRow {
  RowPlace place;
  std::span<const Value> values;  // one a wanted column
  bool isWhole = true;            // false: a value could not be read and is NULL
};

/// Returning false ends the reading.
using RowVisitor = std::function<bool(const JetRow&)>;

/// How many rows a table says that it has, how many its pages list, and how many could be read.
struct RowCount {
  std::uint64_t declared = 0;
  std::uint64_t found = 0;
  std::uint64_t read = 0;
  std::uint64_t whole = 0;  // of those read, the ones without a lost value
};

/// A Jet 3 or Jet 4 database, read only. It looks at the file's bytes, which must outlive it, and keeps no
/// rows: what it needs beyond the file is a few bytes a page. Any sequence of bytes may be given; what is
/// wrong comes back as a Fault, never as an exception or a walk without an end.
class JetDatabase {
 public:
  /// Fails with kNotJet, kUnknownVersion, kTruncated or kCatalogueUnread, when not even the list of tables
  /// can be read.
  [[nodiscard]] static Result<JetDatabase> Open(Bytes file);

  [[nodiscard]] const JetHeader& Header() const { return pages_.Header(); }
  [[nodiscard]] std::uint64_t Size() const { return pages_.Size(); }
  /// The tables that belong to the user, in the order of the catalogue.
  [[nodiscard]] std::vector<std::string> TableNames() const;
  /// Tables whose data lies in another file; they have no rows here.
  [[nodiscard]] const std::vector<std::string>& LinkedTables() const { return linked_; }
  /// What was wrong with the file as a whole and its catalogue.
  [[nodiscard]] const FaultList& Faults() const { return faults_; }

  /// The definition of a table of that name, letter case ignored. Fails with kTableMissing, kTableLinked,
  /// kPageMissing, kPageType or kDefinition.
  [[nodiscard]] Result<JetTable> Table(std::string_view name) const;

  /// Hands every readable row to `visitor`, in the order in which they lie in the file. `columns` are indexes
  /// into table.columns. When all rows were asked for and their number is not the declared one, that is a
  /// fault, too.
  RowCount Read(const JetTable& table, const std::vector<int>& columns, const RowVisitor& visitor,
                FaultList& faults) const;
  /// All columns, in the order of their definition.
  RowCount Read(const JetTable& table, const RowVisitor& visitor, FaultList& faults) const;

 private:
  struct Entry {
    std::string name;
    std::uint32_t page;
  };
  JetDatabase(Bytes file, const JetHeader& header) : pages_(file, header), text_(header) {}
  [[nodiscard]] bool ReadCatalogue();
  [[nodiscard]] FaultKind AbsenceOf(std::string_view name) const;
  void AddObject(std::span<const Value> object);

  JetPages pages_;
  JetText text_;
  std::vector<Entry> tables_;
  std::vector<std::string> linked_;
  FaultList faults_;
};

}  // namespace varnlog::legacy
