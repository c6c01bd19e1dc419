#include "cli/Command.h"
#include "core/LogLayout.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

}  // namespace

// A log of any version is verified, and nothing is brought up to date: a check changes nothing.
void RunCheckCommand(Session& session, const Options& /*options*/, Output& output) {
  session.RequireLogFile();
  const bool readOnly = session.LogIsOld() || !session.LogIsWritable();
  const auto error = session.Engine().OpenDBInWorkspace(session.LogFile(), false, readOnly);
  if (error != 0) session.FailToOpen(error);
  const auto findings = session.Log().Check();
  for (const std::string& finding : findings) output.Write(OneLine(finding) + "\n");
  if (!findings.empty()) session.Fail("VC_ERR_DAMAGED"_key, {{"strError", session.LogFile()}});
  if (!core::IsLog(session.Log())) session.Fail("MN_ERR_DBNOTVALID"_key, {{"strFile", session.LogFile()}});
  output.Write("ok\n");
}

}  // namespace varnlog::cli
