#pragma once

#include <memory>
#include <string>
#include <vector>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/RowWriter.h"

namespace varnlog::dao {

/// Rows that are added are numbered here and sent many at once.
class ServerRowWriter final : public RowWriter {
 public:
  ServerRowWriter(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table,
                  std::vector<std::size_t> ordinals);

  [[nodiscard]] std::shared_ptr<const RowSet> Read(std::int64_t rowId) override;

 private:
  std::int64_t Insert(const CopyBuffer& buffer) override;
  bool Overwrite(const CopyBuffer& buffer, std::int64_t rowId) override;
  [[nodiscard]] std::int64_t InsertAtOnce(const CopyBuffer& buffer);

  std::shared_ptr<ServerStorage> storage_;
  std::vector<std::size_t> ordinals_;
  std::string line_;
};

}  // namespace varnlog::dao
