#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "db/dao/rows/RowWriter.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/rows/HeldInserts.h"

namespace varnlog::dao {

class FileRowWriter final : public RowWriter {
 public:
  FileRowWriter(std::shared_ptr<FileStorage> storage, std::shared_ptr<const TableSchema> table,
                std::vector<std::size_t> ordinals);

  [[nodiscard]] std::shared_ptr<const RowSet> Read(std::int64_t rowId) override;

 private:
  std::int64_t Insert(const CopyBuffer& buffer) override;
  bool Overwrite(const CopyBuffer& buffer, std::int64_t rowId) override;
  [[nodiscard]] std::string InsertInto() const;
  [[nodiscard]] std::string Parameters() const;
  [[nodiscard]] bool IsNextKnown(const CopyBuffer& buffer) const;
  void NoteLast(std::int64_t id);
  std::int64_t InsertLater(const CopyBuffer& buffer);
  Statement& UpdateStatement(const CopyBuffer& buffer);
  [[nodiscard]] bool IsCounterUsedUp();

  std::shared_ptr<FileStorage> storage_;
  Statement read_;
  Statement insert_;
  RowBinding bound_;
  std::unordered_map<std::vector<bool>, Statement> updates_;  // by the set of fields they write
  // The row that was added last, and how many changes this connection had made then.
  std::int64_t lastId_ = 0;
  std::int64_t changes_ = -1;
  std::int64_t epoch_ = -1;
  std::shared_ptr<HeldInserts> held_;
};

}  // namespace varnlog::dao
