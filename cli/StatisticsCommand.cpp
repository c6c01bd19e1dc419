#include <limits>

#include "cli/Command.h"
#include "cli/ListFormats.h"
#include "core/Installation.h"
#include "logview/Selection.h"
#include "statistics/StatisticsPages.h"
#include "statistics/StatisticsReader.h"
#include "statistics/StatisticsRows.h"

namespace varnlog::cli {

void RunStatisticsCommand(Session& session, const Options& options, Output& output) {
  SetSelection(session.globals(), options, session.shortDate());
  session.OpenLog(Session::Access::kRead);
  const auto selection = logview::BuildSelection(session.globals(), session.texts(), session.shortDate());
  const auto rows = session.Log().OpenRecordset(selection.sql, dao::RecordsetType::kDynaset);
  while (!rows->Populate(std::numeric_limits<std::int32_t>::max())) {
  }
  const platform::DateTime today = session.clock().Today();
  const auto read = statistics::ReadStatistics(session.Log(), rows->Ids(), today);
  const auto levels = statistics::LoadReferenceLevels(
      core::DeliveredFile(session.globals(), statistics::kReferenceLevels), today);
  const auto pages = statistics::MakePages(read, levels, session.texts(), session.shortDate());
  const exports::Values values = options.raw ? exports::Values::kRaw : exports::Values::kHarmless;
  statistics::WriteValues(pages, session.texts(), *MakeRowWriter(options.format, values, output));
}

}  // namespace varnlog::cli
