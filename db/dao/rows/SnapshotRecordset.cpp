#include "db/dao/rows/SnapshotRecordset.h"

#include <utility>

namespace varnlog::dao {

SnapshotRecordset::SnapshotRecordset(std::shared_ptr<const std::vector<FieldDef>> defs,
                                     std::shared_ptr<const RowSet> rows)
    : ScrollRecordset(defs), defs_(std::move(defs)), rows_(std::move(rows)) {
  GoToFirst();
}

SnapshotRecordset::SnapshotRecordset(const SnapshotRecordset& origin)
    : ScrollRecordset(origin.defs_), defs_(origin.defs_), rows_(origin.rows_) {}

std::unique_ptr<Recordset> SnapshotRecordset::Clone() {
  return std::unique_ptr<Recordset>(new SnapshotRecordset(*this));
}

CellView SnapshotRecordset::CurrentCell(std::size_t ordinal) {
  return rows_->At(static_cast<std::size_t>(RequirePosition()), ordinal);
}

}  // namespace varnlog::dao
