#pragma once

#include <string>

#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "platform/ShortDate.h"
#include "report/ReportDesign.h"
#include "report/ReportLayout.h"
#include "report/dsrResults.h"

namespace varnlog::report {

/// Everything that one report is made from. The record set belongs to the caller and outlives the job.
struct ReportJob {
  ReportDesign design;
  dsrResults report;
  dao::Recordset& rows;
  platform::ShortDate shortDate;
  LaterEntriesOf laterEntries = {};  // where they are found
  bool withEntries = false;          // whether they are printed
};

/// A report begun now: the stored design, headings in the user's language, the title from the headline of the
/// selection; at its end the state of the log, if that has seals.
[[nodiscard]] ReportJob BeginReport(const core::TextLookup& texts, const std::string& site,
                                    std::string_view headline, platform::DateTime today,
                                    const platform::ShortDate& shortDate, dao::Recordset& rows,
                                    const std::optional<LogState>& state = std::nullopt);

}  // namespace varnlog::report
