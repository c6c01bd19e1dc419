#pragma once

#include <vector>

#include "charts/Chart.h"
#include "core/TextLookup.h"
#include "platform/ShortDate.h"
#include "statistics/ReferenceLevels.h"
#include "statistics/Statistics.h"

namespace varnlog::statistics {

/// The statistics as charts with their tables: exposures a month by type, repeats and exposures of no
/// diagnostic use a month and a person, dose by type, exposures by hour and by weekday.
[[nodiscard]] std::vector<charts::Page> MakePages(const Statistics& statistics, const ReadLevels& levels,
                                                  const core::TextLookup& texts,
                                                  const platform::ShortDate& shortDate);

/// What stands above the charts: how many exposures these are, and what is said of none of them.
[[nodiscard]] std::string SummaryText(const Statistics& statistics, const core::TextLookup& texts);

}  // namespace varnlog::statistics
