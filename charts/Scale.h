#pragma once

#include <vector>

namespace varnlog::charts {

/// The marks of an axis from 0 up to at least `greatest`, in steps of 1, 2 or 5 times a power of ten, about
/// `wanted` of them, of whole numbers not less than 1. An axis for nothing but zeros goes to 1.
[[nodiscard]] std::vector<double> AxisMarks(double greatest, int wanted, bool wholeNumbers = false);

/// Decimals that tell neighbouring marks apart.
[[nodiscard]] int DecimalsOf(const std::vector<double>& marks);

}  // namespace varnlog::charts
