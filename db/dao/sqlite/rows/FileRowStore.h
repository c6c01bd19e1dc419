#pragma once

#include <memory>
#include <span>

#include "db/dao/rows/RowStore.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/rows/Select.h"

namespace varnlog::dao {

class FileRowStore final : public RowStore {
 public:
  FileRowStore(std::shared_ptr<FileStorage> storage, std::shared_ptr<Select> select, Parameters parameters)
      : storage_(std::move(storage)), select_(std::move(select)), parameters_(std::move(parameters)) {}

  [[nodiscard]] std::shared_ptr<const std::vector<FieldDef>> Fields() const override {
    return select_->fields;
  }
  [[nodiscard]] std::unique_ptr<IdSource> MakeIds() override;
  [[nodiscard]] std::unique_ptr<RowWriter> MakeWriter() override;
  [[nodiscard]] RowStamp RecentStamp() override { return storage_->File().Watch().Recent(); }
  [[nodiscard]] std::int64_t OthersVersion() override { return storage_->File().Watch().OthersVersion(); }
  Block Read(std::span<const std::int64_t> ids) override;

 private:
  using Ids = std::span<const std::int64_t>;
  void ReadRange(Ids ids, RowSet& rows);
  void ReadSingly(Ids ids, RowSet& rows);
  Statement& RowStatement(const char* condition);

  std::shared_ptr<FileStorage> storage_;
  std::shared_ptr<Select> select_;
  Parameters parameters_;
};

}  // namespace varnlog::dao
