#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/RowFields.h"
#include "db/dao/rows/RowSet.h"

namespace varnlog::dao {

/// Rows of a table that a transaction has read, added or changed through one record set, as they stand now:
/// nobody else can change them, so they need not be asked for again. Of the rows that were added the last
/// ones.
class KnownRows {
 public:
  /// `ordinals`: which of the table's fields each field of the record set is.
  KnownRows(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table,
            std::vector<std::size_t> ordinals);

  /// nullptr when the row is not known.
  [[nodiscard]] std::shared_ptr<const RowSet> Find(std::int64_t id);
  /// A row as the server has just given it. One that is known already stays: the server may not have its last
  /// change yet.
  void NoteRead(std::int64_t id, std::shared_ptr<const RowSet> row);
  /// A row as it is sent, with all fields of the table.
  void NoteAdded(std::int64_t id, std::string_view copyLine);
  /// What is written to the row, which Find() gave just now; behind ServerStorage::NoteChange().
  void NoteChanged(std::int64_t id, const RowSet* before, const CopyBuffer& buffer);

 private:
  struct State {
    std::int64_t writeRight = 0;
    std::int64_t changes = 0;
    std::int64_t undone = 0;
    friend bool operator==(const State&, const State&) = default;
  };
  struct AddedRow {
    std::int64_t id = 0;
    std::string line;
  };
  [[nodiscard]] State Now() const;
  void ForgetWhatIsOver();
  [[nodiscard]] std::shared_ptr<const RowSet> FromLine(std::string_view line) const;

  std::shared_ptr<ServerStorage> storage_;
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::size_t> ordinals_;
  State state_;
  std::unordered_map<std::int64_t, std::shared_ptr<const RowSet>> rows_;
  std::vector<AddedRow> added_;  // by their numbers' last digits
};

}  // namespace varnlog::dao
