#include "logview/LogWatch.h"

#include <utility>

#include "core/LogLayout.h"

namespace varnlog::logview {

LogWatch::LogWatch(std::shared_ptr<dao::Database> log) : log_(std::move(log)), seen_(Now()) {}

// The stamp first: what changes while the rest is asked for is news the next time.
LogWatch::State LogWatch::Now() const {
  State state{.stamp = log_->Stamp()};
  state.lastExposure = log_->Greatest(core::kExposureTable, "tXrayCulIntIDPk");
  return state;
}

LogWatch::News LogWatch::Look() {
  if (seen_.stamp == log_->Stamp()) return News::kNone;
  const std::int64_t before = seen_.lastExposure;
  seen_ = Now();
  return seen_.lastExposure > before ? News::kExposures : News::kValues;
}

}  // namespace varnlog::logview
