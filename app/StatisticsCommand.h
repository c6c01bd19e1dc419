#pragma once

#include <string>

#include <QWidget>

#include "core/Globals.h"
#include "db/dao/Recordset.h"
#include "platform/ShortDate.h"
#include "report/PrintCommands.h"
#include "start/StartUp.h"

namespace varnlog::app {

/// What showing statistics works with; all of it outlives the call.
struct StatisticsJob {
  core::Globals& globals;
  const start::Services& services;
  const platform::ShortDate& shortDate;
  report::PrintCommands& print;
};

/// Shows the statistics of these rows, which `headline` names. Errors have been shown to the user when it
/// returns.
void ShowStatisticsOf(QWidget* parent, const StatisticsJob& job, const dao::Recordset& rows,
                      const std::string& headline);

}  // namespace varnlog::app
