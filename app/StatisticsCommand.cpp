#include "app/StatisticsCommand.h"

#include <optional>

#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "statistics/StatisticsPages.h"
#include "statistics/StatisticsReader.h"
#include "statistics/frmStatistics.h"
#include "ui/WaitWindow.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

constexpr std::int64_t kRowsPerSlice = 20'000;

/// Nothing when the user stopped it.
std::optional<statistics::Statistics> Read(QWidget* parent, const StatisticsJob& job,
                                           const dao::Recordset& rows) {
  ui::WaitWindow window(parent, job.services.texts, "dlgStatistics");
  const auto ids = rows.Ids();
  statistics::StatisticsReader reader(*job.globals.LogEngineGl->Database(), ids, job.services.clock.Today());
  const auto all = static_cast<std::int64_t>(ids.size());
  std::int64_t done = 0;
  while (!reader.Read(kRowsPerSlice)) {
    done = std::min(done + kRowsPerSlice, all);
    if (!window.Advance("ST_PROGRESS"_key, done, all)) return std::nullopt;
  }
  return reader.Take();
}

}  // namespace

void ShowStatisticsOf(QWidget* parent, const StatisticsJob& job, const dao::Recordset& rows,
                      const std::string& headline) {
  const core::TextLookup& texts = job.services.texts;
  try {
    const auto read = Read(parent, job, rows);
    if (!read) return;
    const auto levels = statistics::LoadReferenceLevels(
        core::DeliveredFile(job.globals, statistics::kReferenceLevels), job.services.clock.Today());
    statistics::frmStatistics(parent,
                              {.texts = texts,
                               .user = job.services.user,
                               .ini = job.services.ini,
                               .iniFile = job.globals.IniFileGl,
                               .log = job.globals.strDataFileGl,
                               .print = job.print},
                              statistics::MakePages(*read, levels, texts, job.shortDate), headline,
                              statistics::SummaryText(*read, texts))
        .exec();
  } catch (const dao::EngineError& error) {
    job.services.Messages().ShowText(core::EngineErrorText(texts, error));
  }
}

}  // namespace varnlog::app
