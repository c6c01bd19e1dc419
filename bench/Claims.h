#pragma once

#include <span>

#include "bench/Ratios.h"

namespace varnlog::bench {

/// Every claim about speed that the documents make.
[[nodiscard]] std::span<const Ratio> Claims();

}  // namespace varnlog::bench
