#pragma once

#include <memory>
#include <span>
#include <string>

#include "db/dao/postgres/ServerIds.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/RowSet.h"
#include "db/dao/rows/RowStore.h"
#include "db/dao/sql/ResolvedSelect.h"

namespace varnlog::dao {

/// The rows of a statement on a server: one round trip for a block of rows or a slice of ids.
class ServerRows final : public RowStore {
 public:
  ServerRows(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const ResolvedSelect> select)
      : storage_(std::move(storage)), select_(std::move(select)) {}

  [[nodiscard]] std::shared_ptr<const std::vector<FieldDef>> Fields() const override {
    return select_->fields;
  }
  [[nodiscard]] std::unique_ptr<IdSource> MakeIds() override;
  [[nodiscard]] std::unique_ptr<RowWriter> MakeWriter() override;
  [[nodiscard]] RowStamp RecentStamp() override { return storage_->RecentStamp(); }
  [[nodiscard]] std::int64_t OthersVersion() override { return storage_->OthersVersion(); }
  Block Read(std::span<const std::int64_t> ids) override;

 private:
  [[nodiscard]] ServerResult Where(const std::string& condition, const ServerValues& values);
  [[nodiscard]] ServerResult Between(std::int64_t first, std::int64_t last);
  [[nodiscard]] ServerResult Among(std::span<const std::int64_t> ids);
  [[nodiscard]] State StateWithoutRows();
  [[nodiscard]] bool AreFirst(std::span<const std::int64_t> ids);

  std::shared_ptr<ServerStorage> storage_;
  std::shared_ptr<const ResolvedSelect> select_;
  std::shared_ptr<FirstRows> firstRows_ = std::make_shared<FirstRows>();
};

/// All rows of a statement.
[[nodiscard]] std::shared_ptr<const RowSet> ReadAll(ServerStorage& storage, const ResolvedSelect& select);

/// " ORDER BY ..." as a file orders: what is empty first, equal rows by their key in the direction of the
/// last term. "" without any term and key.
[[nodiscard]] std::string ServerOrder(const ResolvedSelect& select, const std::string& key);

}  // namespace varnlog::dao
