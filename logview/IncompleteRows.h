#pragma once

#include <cstdint>
#include <memory>

#include "db/dao/DBEngine.h"
#include "db/dao/ValueIndex.h"

namespace varnlog::logview {

/// Which rows of a log lack a value that somebody still has to enter: one that is open and empty and may not
/// stay so.
class IncompleteRows {
 public:
  explicit IncompleteRows(dao::Database& log);

  /// As RowFinder.
  bool Read(std::int64_t rows);
  [[nodiscard]] bool IsComplete() const { return index_->IsComplete(); }
  [[nodiscard]] bool IsCurrent() const { return index_->IsCurrent(); }

  /// Those of the rows read so far.
  [[nodiscard]] dao::IdSet Find() const;
  /// They have been found and need not be found again.
  void Forget() { index_->Forget(); }

 private:
  std::unique_ptr<dao::ValueIndex> index_;
};

/// Whether the value in this column of the current row is such a one.
[[nodiscard]] bool IsMissing(dao::Recordset& rows, int column);

}  // namespace varnlog::logview
