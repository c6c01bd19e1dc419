#pragma once

#include <memory>
#include <string>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/IdSource.h"
#include "db/dao/sql/ResolvedSelect.h"

namespace varnlog::dao {

/// Ids in slices, each of which begins behind the last row of the one before. An order for which a place
/// cannot be named by one field's value and the row's id is read whole, sorted by the server.
class ServerIds final : public IdSource {
 public:
  ServerIds(std::shared_ptr<ServerStorage> storage, std::shared_ptr<const ResolvedSelect> select);
  bool Fetch(std::size_t rows, std::vector<std::int64_t>& ids) override;

 private:
  [[nodiscard]] bool CanResume() const;
  [[nodiscard]] bool HasNulls();
  bool FetchWhole(std::vector<std::int64_t>& ids);
  bool FetchSlice(std::size_t rows, std::vector<std::int64_t>& ids);

  std::shared_ptr<ServerStorage> storage_;
  std::shared_ptr<const ResolvedSelect> select_;
  std::string key_;
  std::string order_;  // of the order's only field; "" for the order of ids
  bool descending_ = false;
  bool started_ = false;
  bool whole_ = false;
  std::string lastValue_;
  std::int64_t lastId_ = 0;
};

}  // namespace varnlog::dao
