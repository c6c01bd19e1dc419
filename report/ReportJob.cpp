#include "report/ReportJob.h"

namespace varnlog::report {

ReportJob BeginReport(const core::TextLookup& texts, const std::string& site, std::string_view headline,
                      platform::DateTime today, const platform::ShortDate& shortDate, dao::Recordset& rows) {
  dsrResults report(texts, site, today, shortDate);
  report.SetTitle(headline);
  return {StoredDesign(), std::move(report), rows, shortDate};
}

}  // namespace varnlog::report
