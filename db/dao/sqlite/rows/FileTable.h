#pragma once

#include <list>
#include <string>
#include <vector>

#include "db/dao/rows/TableRecordset.h"
#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

class FileTable final : public TableRecordset {
 public:
  FileTable(std::shared_ptr<FileStorage> storage, std::shared_ptr<const TableSchema> table);

  [[nodiscard]] std::int64_t RecordCount() const override;

 private:
  struct SeekPath {
    const Index* index = nullptr;
    std::vector<Statement> byKeyCount;
    // Rows are mostly added in the order of time, so a date that is later than all others is not looked for.
    std::size_t dateKey = 0;    // which of the index's fields is the date, if it has one
    std::size_t dateField = 0;  // that field's place in the table
    bool hasDate = false;
    Statement latest;
    std::string latestDate;     // "" in an empty table
    std::int64_t changes = -1;  // of the connection when it was found out ...
    std::int64_t epoch = -1;    // ... in this transaction
  };

  [[nodiscard]] std::optional<std::int64_t> FirstId() override;
  [[nodiscard]] std::optional<std::int64_t> IdBehind(std::int64_t id) override;
  void UseIndex(const Index& index) override;
  [[nodiscard]] std::optional<std::int64_t> Find(std::span<const SeekKey> keys) override;
  void NoteAdded(const CopyBuffer& buffer) override;

  void AddPath(const Index& index);
  Statement& SeekStatement(std::size_t keyCount);
  [[nodiscard]] bool IsLaterThanAll(std::span<const SeekKey> keys);

  std::shared_ptr<FileStorage> storage_;
  Statement next_;
  std::list<SeekPath> paths_;
  SeekPath* path_ = nullptr;
};

}  // namespace varnlog::dao
