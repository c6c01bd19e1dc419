#pragma once

#include <cstdint>
#include <optional>

#include "db/dao/DBEngine.h"

namespace varnlog::logview {

/// The exposures that the last update brought. Their numbers follow on those that were there before.
class NewRows {
 public:
  /// To be called before an update: what comes later is new.
  void BeginUpdate(dao::Database& log);
  void Forget() { newest_.reset(); }
  [[nodiscard]] bool IsMarking() const { return newest_.has_value(); }

  [[nodiscard]] bool Contains(std::int64_t exposure) const { return newest_ && exposure > *newest_; }

 private:
  std::optional<std::int64_t> newest_;  // before the update
};

}  // namespace varnlog::logview
