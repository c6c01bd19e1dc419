#pragma once

#include <memory>
#include <string>
#include <vector>

#include "db/dao/postgres/KnownRows.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/RowWriter.h"

namespace varnlog::dao {

/// Rows that are added are numbered here and sent many at once.
class ServerRowWriter final : public RowWriter {
 public:
  ServerRowWriter(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const TableSchema> table,
                  std::vector<std::size_t> ordinals);

  [[nodiscard]] std::shared_ptr<const RowSet> Read(std::int64_t rowId) override;
  /// The same for many rows at once, which `read` gives: their numbers, then the fields. They are to be
  /// changed next.
  void NoteRead(const ServerResult& read);

 private:
  std::int64_t Insert(const CopyBuffer& buffer) override;
  bool Overwrite(const CopyBuffer& buffer, std::int64_t rowId) override;
  void AddByCopy(std::int64_t id);
  [[nodiscard]] std::int64_t InsertAtOnce(const CopyBuffer& buffer);
  void NoteChange(const CopyBuffer& buffer, std::int64_t rowId, const RowSet* before);
  void OverwriteLater(const CopyBuffer& buffer, std::int64_t rowId);

  std::shared_ptr<ServerStorage> storage_;
  bool hasCounter_;
  std::vector<std::size_t> places_;  // of the table's fields in the copy buffer, where it has them
  std::string line_;
  KnownRows known_;
};

}  // namespace varnlog::dao
