#pragma once

#include <memory>

#include "db/dao/rows/RowSet.h"
#include "db/dao/rows/ScrollRecordset.h"

namespace varnlog::dao {

/// A copy of all rows; read only.
class SnapshotRecordset final : public ScrollRecordset {
 public:
  SnapshotRecordset(std::shared_ptr<const std::vector<FieldDef>> defs, std::shared_ptr<const RowSet> rows);

  [[nodiscard]] RecordsetType Type() const override { return RecordsetType::kSnapshot; }
  [[nodiscard]] std::int64_t RecordCount() const override {
    return static_cast<std::int64_t>(rows_->RowCount());
  }
  [[nodiscard]] std::unique_ptr<Recordset> Clone() override;

 private:
  SnapshotRecordset(const SnapshotRecordset& origin);

  [[nodiscard]] bool Reach(std::int64_t position) override { return position < RecordCount(); }
  [[nodiscard]] std::int64_t ReachEnd() override { return RecordCount(); }
  void Leave() override {}
  [[nodiscard]] CellView CurrentCell(std::size_t ordinal) override;

  std::shared_ptr<const std::vector<FieldDef>> defs_;
  std::shared_ptr<const RowSet> rows_;
};

}  // namespace varnlog::dao
