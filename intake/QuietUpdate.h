#pragma once

#include <functional>
#include <string>
#include <vector>

#include "intake/UpdateRun.h"

namespace varnlog::intake {

struct QuietResult {
  UpdateResult update;
  /// What the user has to hear, and did not hear yet.
  std::vector<std::string> unsaid;
};

/// Takes the records in without asking or telling anything: a run that would have to ask is given up, with
/// the exchange file untouched, and what is to be said afterwards is in the result. `wait` is called every
/// few milliseconds while the run waits for another program.
[[nodiscard]] QuietResult RunQuietUpdate(const UpdateContext& context, const std::function<void()>& wait);

}  // namespace varnlog::intake
