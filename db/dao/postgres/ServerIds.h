#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/IdSource.h"
#include "db/dao/rows/RowStore.h"
#include "db/dao/sql/ResolvedSelect.h"

namespace varnlog::dao {

/// The rows of a record set's first slice of ids: they are shown next.
struct FirstRows {
  std::vector<std::int64_t> ids;
  std::optional<ServerResult> rows;  // as RowColumns() names them
  RowStore::State state;
};

/// What rows are asked for: the number of changes, so that it is the one of their state, the id, then the
/// statement's columns.
[[nodiscard]] std::string RowColumns(const ResolvedSelect& select);
enum RowColumn : int { kChangesColumn, kIdColumn, kFirstFieldColumn };

/// Ids in slices, each of which begins behind the last row of the one before. An order for which a place
/// cannot be named by one field's value and the row's id is read whole, sorted by the server.
class ServerIds final : public IdSource {
 public:
  ServerIds(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const ResolvedSelect> select,
            std::shared_ptr<FirstRows> firstRows);
  bool Fetch(std::size_t rows, std::vector<std::int64_t>& ids) override;

 private:
  [[nodiscard]] bool CanResume() const;
  bool FetchWhole(std::vector<std::int64_t>& ids);
  bool FetchFirst(std::size_t rows, std::vector<std::int64_t>& ids);
  bool FetchSlice(std::size_t rows, std::vector<std::int64_t>& ids);
  void NoteLast(const ServerResult& slice, int idColumn, int valueColumn);

  std::shared_ptr<ServerStorage> storage_;
  std::shared_ptr<const ResolvedSelect> select_;
  std::shared_ptr<FirstRows> firstRows_;
  std::string key_;
  std::string order_;  // of the order's only field; "" for the order of ids
  bool descending_ = false;
  bool started_ = false;
  bool whole_ = false;
  std::string lastValue_;
  std::int64_t lastId_ = 0;
};

}  // namespace varnlog::dao
