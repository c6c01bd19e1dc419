#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "db/dao/rows/RowWriter.h"
#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

class FileRowWriter final : public RowWriter {
 public:
  FileRowWriter(std::shared_ptr<FileStorage> storage, std::shared_ptr<const TableSchema> table,
                std::vector<std::size_t> ordinals);

  [[nodiscard]] std::shared_ptr<const RowSet> Read(std::int64_t rowId) override;

 private:
  std::int64_t Insert(const CopyBuffer& buffer) override;
  bool Overwrite(const CopyBuffer& buffer, std::int64_t rowId) override;
  Statement& InsertStatement();
  Statement& UpdateStatement(const CopyBuffer& buffer);
  void BindForInsert(const CopyBuffer& buffer);
  [[nodiscard]] bool IsCounterUsedUp();

  std::shared_ptr<FileStorage> storage_;
  Statement read_;
  // What a parameter of the insert holds: a text by its place, whatever stands there.
  struct Bound {
    CellKind kind = CellKind::kDeleted;  // never bound
    std::int64_t integer = 0;
    const char* text = nullptr;
    std::size_t length = 0;
    friend bool operator==(const Bound&, const Bound&) = default;
  };
  Statement insert_;
  std::vector<Bound> bound_;
  std::unordered_map<std::vector<bool>, Statement> updates_;  // by the set of fields they write
};

}  // namespace varnlog::dao
