#include "report/ReportJob.h"

namespace varnlog::report {

ReportJob BeginReport(const core::TextLookup& texts, const std::string& site, std::string_view headline,
                      platform::DateTime today, const platform::ShortDate& shortDate, dao::Recordset& rows,
                      const std::optional<LogState>& state) {
  dsrResults report(texts, site, today, shortDate);
  report.SetTitle(headline);
  if (state) report.SetLogState(texts, *state);
  return {StoredDesign(), std::move(report), rows, shortDate};
}

}  // namespace varnlog::report
