#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/rows/IdSource.h"
#include "db/dao/rows/RowSet.h"
#include "db/dao/sqlite/rows/Select.h"

namespace varnlog::dao {

class Connection;

/// Ids read from the storage in slices. Between two slices nothing stays open: the next one begins behind the
/// last row of the one before, which an index finds at once. An order that no index serves is read whole.
class StatementIds final : public IdSource {
 public:
  StatementIds(std::shared_ptr<FileStorage> storage, std::shared_ptr<Select> select, Parameters parameters);
  bool Fetch(std::size_t rows, std::vector<std::int64_t>& ids) override;

 private:
  [[nodiscard]] bool CanResume() const;
  [[nodiscard]] std::string IdSql(const std::string& further) const;
  [[nodiscard]] std::string OrderClause() const;
  [[nodiscard]] std::string OrderField() const;
  [[nodiscard]] bool OrderFieldHasNulls();
  Statement& First();
  bool ReadEqualToLast(std::size_t& limit, std::vector<std::int64_t>& ids);
  bool ReadBehindLast(std::size_t& limit, std::vector<std::int64_t>& ids);
  bool ReadSlice(const std::string& further, std::size_t& limit, std::vector<std::int64_t>& ids);
  bool FetchFirst(std::size_t limit, std::vector<std::int64_t>& ids);
  void Remember(std::int64_t lastId);

  std::shared_ptr<FileStorage> storage_;
  std::shared_ptr<Select> select_;
  Parameters parameters_;
  bool started_ = false;
  std::int64_t lastId_ = 0;
  RowSet lastKey_{1};  // the order field's value in the last row, one row or none
};

}  // namespace varnlog::dao
