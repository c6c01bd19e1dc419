#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/RowWriter.h"
#include "cli/Session.h"
#include "db/dao/Recordset.h"

namespace varnlog::cli {

/// Where the cells of a list come from. Refers to the record set and the session that it was made with.
class RowSource {
 public:
  virtual ~RowSource() = default;
  [[nodiscard]] virtual std::vector<std::string> Headings() const = 0;
  /// The current row, in whose cells the memory of the last one is used again. Throws dao::EngineError.
  virtual void Read(Row& row) const = 0;
};

/// The fields as they are stored, under their names.
[[nodiscard]] std::unique_ptr<RowSource> MakeStoredRows(dao::Recordset& rows);
/// The thirteen columns of the grid as they are shown.
[[nodiscard]] std::unique_ptr<RowSource> MakeDisplayedRows(dao::Recordset& rows, const Session& session);

}  // namespace varnlog::cli
