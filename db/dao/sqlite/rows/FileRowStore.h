#pragma once

#include <memory>
#include <span>

#include "db/dao/rows/RowStore.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/rows/Select.h"

namespace varnlog::dao {

class FileRowStore final : public RowStore {
 public:
  FileRowStore(std::shared_ptr<Connection> connection, std::shared_ptr<Select> select, Parameters parameters)
      : connection_(std::move(connection)), select_(std::move(select)), parameters_(std::move(parameters)) {}

  [[nodiscard]] std::shared_ptr<const std::vector<FieldDef>> Fields() const override {
    return select_->fields;
  }
  [[nodiscard]] std::unique_ptr<IdSource> MakeIds() override;
  [[nodiscard]] std::unique_ptr<RowWriter> MakeWriter() override;
  [[nodiscard]] RowStamp RecentStamp() override { return connection_->RecentStamp(); }
  [[nodiscard]] std::int64_t OthersVersion() override { return connection_->OthersVersion(); }
  State Read(std::span<const std::int64_t> ids, RowSet& rows) override;

 private:
  using Ids = std::span<const std::int64_t>;
  void ReadRange(Ids ids, RowSet& rows);
  void ReadSingly(Ids ids, RowSet& rows);
  Statement& RowStatement(const char* condition);

  std::shared_ptr<Connection> connection_;
  std::shared_ptr<Select> select_;
  Parameters parameters_;
};

}  // namespace varnlog::dao
