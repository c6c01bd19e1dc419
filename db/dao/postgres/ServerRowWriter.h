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
  [[nodiscard]] bool KnowsRow(std::int64_t rowId) const;
  void NoteChange(const CopyBuffer& buffer, std::int64_t rowId);
  void OverwriteLater(const CopyBuffer& buffer, std::int64_t rowId);

  std::shared_ptr<ServerStorage> storage_;
  bool hasCounter_;
  std::vector<std::size_t> places_;  // of the table's fields in the copy buffer, where it has them
  std::string line_;
  // The row read last, as long as nobody can have changed it: within one transaction that writes.
  std::shared_ptr<const RowSet> row_;
  std::int64_t rowId_ = 0;
  std::int64_t rowRight_ = 0;
  std::int64_t rowChanges_ = -1;
};

}  // namespace varnlog::dao
