#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "db/dao/Field.h"
#include "db/dao/RowStamp.h"
#include "db/dao/rows/IdSource.h"
#include "db/dao/rows/RowBlock.h"
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
  struct Block {
    std::shared_ptr<const RowBlock> rows;
    State state;
  };
  /// The rows of these ids in their order, one that is gone as deleted; all of them in one state.
  virtual Block Read(std::span<const std::int64_t> ids) = 0;
};

/// True when the ids run up or down without large gaps, as they do in the order in which rows were added:
/// their whole range is read sooner then than each by itself.
[[nodiscard]] bool AreDense(std::span<const std::int64_t> ids);

}  // namespace varnlog::dao
