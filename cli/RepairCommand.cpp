#include "cli/Command.h"

namespace varnlog::cli {

using namespace core::literals;

void RunRepairCommand(Session& session, const Options& options, Output& output) {
  session.RequireLogFile();
  session.RefuseOldLog();
  const std::string lastError = session.Engine().LastError();
  session.Engine().RepairDatabase(session.LogFile());
  if (session.Engine().LastError() != lastError) {
    session.Fail("PP_ERR_REPAIR"_key, {{"strError", session.Engine().LastError()}});
  }
  RunCheckCommand(session, options, output);
}

}  // namespace varnlog::cli
