#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "db/dao/CellView.h"
#include "db/dao/Field.h"

namespace varnlog::dao {

class Database;

/// Hears of every row that record sets add to one table of a database or change in it, within the transaction
/// in which that happens, and may write rows of its own there. An exception from any of these undoes the
/// change, and from Committing() the transaction.
class ChangeJournal {
 public:
  virtual ~ChangeJournal() = default;

  /// The table it is about; the same for its whole life.
  [[nodiscard]] virtual std::string_view Table() const = 0;
  /// A row was added. One value a field in the table's order, the counter's among them.
  virtual void RowAdded(Database& database, std::span<const FieldDef> fields,
                        std::span<const CellView> values) = 0;
  /// A field of the row is about to get another value.
  virtual void FieldChanging(Database& database, std::int64_t rowId, const FieldDef& field,
                             const CellView& before, const CellView& after) = 0;
  /// The transaction is about to be committed; the last occasion to write in it.
  virtual void Committing(Database& database) = 0;
  /// The transaction is over, committed or undone.
  virtual void Ended() noexcept = 0;
};

}  // namespace varnlog::dao
