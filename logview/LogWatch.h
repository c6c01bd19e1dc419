#pragma once

#include <cstdint>
#include <memory>

#include "db/dao/DBEngine.h"

namespace varnlog::logview {

/// Tells whether what is shown of a log on a server may have changed, at the price of a look at what the
/// server has announced; only when there is something new is it asked what.
class LogWatch {
 public:
  enum class News { kNone, kValues, kExposures };

  /// From now on. Throws dao::EngineError.
  explicit LogWatch(std::shared_ptr<dao::Database> log);

  /// Since the last look; changes made here count as well. A connection that was lost is made anew. Throws
  /// dao::EngineError, and then says the same the next time.
  [[nodiscard]] News Look();

 private:
  struct State {
    dao::RowStamp stamp;
    std::int64_t lastExposure = 0;
  };
  [[nodiscard]] State Now() const;

  std::shared_ptr<dao::Database> log_;
  State seen_;
};

}  // namespace varnlog::logview
