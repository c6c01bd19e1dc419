#pragma once

#include <memory>

#include "db/dao/rows/KeySet.h"
#include "db/dao/rows/ScrollRecordset.h"

namespace varnlog::dao {

/// Keeps each row's id and reads a row when it is visited.
class DynasetRecordset final : public ScrollRecordset {
 public:
  explicit DynasetRecordset(std::shared_ptr<RowStore> store);

  [[nodiscard]] RecordsetType Type() const override { return RecordsetType::kDynaset; }
  [[nodiscard]] std::int64_t RecordCount() const override { return keys_->Count(); }
  bool Populate(std::int64_t rows) override;
  [[nodiscard]] std::unique_ptr<Recordset> Clone() override;

  [[nodiscard]] std::span<const std::int64_t> Ids() const override { return keys_->Ids(); }
  [[nodiscard]] std::unique_ptr<Recordset> Only(std::vector<std::int64_t> ids) const override;

  void AddNew() override;
  void Edit() override;
  void Update() override;
  void CancelUpdate() override { Buffer().Close(); }

 private:
  DynasetRecordset(const DynasetRecordset& origin);
  DynasetRecordset(const DynasetRecordset& origin, std::unique_ptr<IdSource> ids);

  [[nodiscard]] bool Reach(std::int64_t position) override;
  [[nodiscard]] std::int64_t ReachEnd() override;
  void Leave() override;
  [[nodiscard]] CellView CurrentCell(std::size_t ordinal) override;
  RowWriter& Writer();

  std::shared_ptr<RowStore> store_;
  std::shared_ptr<KeySet> keys_;
  std::unique_ptr<RowWriter> writer_;
  RowView row_;  // empty until a value of the current row is asked for
};

}  // namespace varnlog::dao
