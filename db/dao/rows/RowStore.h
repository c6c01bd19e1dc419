#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "db/dao/Field.h"
#include "db/dao/RowStamp.h"
#include "db/dao/rows/IdSource.h"
#include "db/dao/rows/RowSet.h"
#include "db/dao/rows/RowWriter.h"

namespace varnlog::dao {

/// What a dynaset needs of a storage: the rows of one statement. Every function throws EngineError.
class RowStore {
 public:
  virtual ~RowStore() = default;

  /// Of the record set.
  [[nodiscard]] virtual std::shared_ptr<const std::vector<FieldDef>> Fields() const = 0;
  [[nodiscard]] virtual std::unique_ptr<IdSource> MakeIds() = 0;
  [[nodiscard]] virtual std::unique_ptr<RowWriter> MakeWriter() = 0;

  /// Costs little: it is asked for with every row that is looked at. Others' changes may show a few
  /// milliseconds late.
  [[nodiscard]] virtual RowStamp RecentStamp() = 0;
  /// Changes exactly when somebody else has changed the table.
  [[nodiscard]] virtual std::int64_t OthersVersion() = 0;

  /// The state in which rows were read.
  struct State {
    RowStamp stamp;
    std::int64_t othersVersion = 0;
  };
  /// Appends the rows of these ids, one that is gone as deleted; all of them in one state.
  virtual State Read(std::span<const std::int64_t> ids, RowSet& rows) = 0;
};

}  // namespace varnlog::dao
