#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "db/dao/Field.h"
#include "db/dao/rows/RowSet.h"

namespace varnlog::dao {

class Connection;

/// Finds the rows of a table on its pages themselves, without the tree that leads to them, for when a page of
/// the tree is damaged. A row is known by its values, which must be of the fields' types; so a table needs
/// several fields to be told from others.
///
/// A page (numbers are big-endian, a varint has 7 bits a byte, the high bit meaning "more follow"):
///
///     0      13: a page that holds rows      3..4   number of rows
///     8...   for each row, 2 bytes: where on the page it stands
///
/// and a row: its length (varint), its id (varint), the length of the list of types (varint), the types
/// (varints), the values.
class PageScan {
 public:
  PageScan(Connection& file, const std::vector<FieldDef>& fields) : file_(file), fields_(fields) {}

  [[nodiscard]] bool CanTellTable() const;

  /// The values in the order of the fields; fewer when fields were added after the row.
  using Take = std::function<void(std::int64_t rowId, const std::vector<CellView>& values)>;
  /// `progress` gets the part done. False when there were rows that go on on other pages; they are left out.
  bool Run(const Take& take, const std::function<void(double)>& progress);

 private:
  void ScanPage(std::string_view page, const Take& take);
  [[nodiscard]] bool IsOfTable(const std::vector<CellView>& values) const;

  Connection& file_;
  const std::vector<FieldDef>& fields_;
  bool sawLongRows_ = false;
};

}  // namespace varnlog::dao
