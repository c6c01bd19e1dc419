#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "exports/RowWriter.h"
#include "intake/CodeMappings.h"
#include "platform/ShortDate.h"

namespace varnlog::exports {

/// Where the cells of a list come from. Refers to the record set and all else that it was made with.
class RowSource {
 public:
  virtual ~RowSource() = default;
  [[nodiscard]] virtual std::vector<std::string> Headings() const = 0;
  /// The usual width of each column, in digits; 0 where it is not known.
  [[nodiscard]] virtual std::vector<int> Widths() const = 0;
  /// The current row, in whose cells the memory of the last one is used again. Throws dao::EngineError.
  virtual void Read(Row& row) const = 0;
};

/// The fields as they are stored, under their names.
[[nodiscard]] std::unique_ptr<RowSource> MakeStoredRows(dao::Recordset& rows);

/// What turns a stored row into the texts of the grid.
struct DisplayForm {
  const core::TextLookup& texts;
  const intake::ToothScheme& scheme;
  const platform::ShortDate& shortDate;
};

/// All columns of the grid.
[[nodiscard]] std::vector<int> AllColumns();
/// The columns of the grid as they are shown, of which `columns` are the numbers.
[[nodiscard]] std::unique_ptr<RowSource> MakeDisplayedRows(dao::Recordset& rows, const DisplayForm& form,
                                                           std::vector<int> columns);

/// Reads the current row; false when somebody deleted it meanwhile.
[[nodiscard]] bool ReadRow(const RowSource& source, Row& row);

}  // namespace varnlog::exports
