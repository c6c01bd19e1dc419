#include "intake/RunMark.h"

#include "core/LogConfig.h"

namespace varnlog::intake {

namespace {

constexpr std::string_view kKey = "IntakeRun";

}  // namespace

RunId ReadRunMark(dao::Database& log) {
  return core::ReadLogConfig(log, kKey).value_or(RunId());
}

void WriteRunMark(dao::Database& log, const RunId& id) {
  core::WriteLogConfig(log, kKey, id);
}

}  // namespace varnlog::intake
