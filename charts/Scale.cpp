#include "charts/Scale.h"

#include <algorithm>
#include <cmath>

namespace varnlog::charts {

std::vector<double> AxisMarks(double greatest, int wanted, bool wholeNumbers) {
  if (!(greatest > 0) || !std::isfinite(greatest)) greatest = 1;
  const double atLeast = greatest / std::max(wanted, 1);
  const double power = std::pow(10.0, std::floor(std::log10(atLeast)));
  double step = 10 * power;
  for (const double factor : {5.0, 2.0, 1.0}) {
    // What rounding adds must not lead to the next greater step.
    if (factor * power * (1 + 1e-9) >= atLeast) step = factor * power;
  }
  if (wholeNumbers) step = std::max(step, 1.0);
  std::vector<double> marks;
  for (int i = 0;; ++i) {
    marks.push_back(i * step);
    if (marks.back() * (1 + 1e-9) >= greatest) return marks;
  }
}

int DecimalsOf(const std::vector<double>& marks) {
  if (marks.size() < 2) return 0;
  return std::max(0, -static_cast<int>(std::floor(std::log10(marks[1] - marks[0]) + 1e-9)));
}

}  // namespace varnlog::charts
