#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/BulkRows.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

class FileStorage;

class FileBulkRows final : public BulkRows {
 public:
  FileBulkRows(std::shared_ptr<FileStorage> storage, std::string_view table);

  void SuspendIndexes() override;
  void RestoreIndexes(const std::function<bool()>& progress) override;
  void Insert(std::span<const Value> row) override;
  [[nodiscard]] int FindDifference(std::int64_t id, std::span<const Value> row) override;
  void SetLastId(std::int64_t id) override;

 private:
  [[nodiscard]] bool GoTo(std::int64_t id);
  [[nodiscard]] bool IsAt(std::int64_t id) const;

  std::shared_ptr<FileStorage> storage_;
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::array<char, 19>> dates_;  // of the row that is being inserted
  std::vector<std::string> suspended_;       // how the indexes were declared
  Statement insert_;
  Statement find_;  // its current row is the one compared last
  bool isFinding_ = false;
};

}  // namespace varnlog::dao
