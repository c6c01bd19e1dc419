#include "logview/LogWatch.h"

#include <array>
#include <utility>

#include "core/LogLayout.h"

namespace varnlog::logview {

LogWatch::LogWatch(std::shared_ptr<dao::Database> log) : log_(std::move(log)), seen_(Now()) {}

// The stamp first: what changes while the rest is asked for is news the next time.
LogWatch::State LogWatch::Now() const {
  const std::array columns = {dao::IndexedColumn{.fields = {"tXraySType"}}};
  State state{.stamp = log_->IndexValues(core::kExposureTable, columns)};
  state.lastExposure = log_->Greatest(core::kExposureTable, "tXrayCulIntIDPk");
  return state;
}

LogWatch::News LogWatch::Look() {
  if (seen_.stamp->IsCurrent()) return News::kNone;
  const std::int64_t before = seen_.lastExposure;
  seen_ = Now();
  return seen_.lastExposure > before ? News::kExposures : News::kValues;
}

}  // namespace varnlog::logview
