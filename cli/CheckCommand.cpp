#include "cli/Command.h"
#include "core/LogCheck.h"
#include "core/LogLayout.h"

namespace varnlog::cli {

using namespace core::literals;

// A log of any version is verified, and nothing is brought up to date: a check changes nothing.
void RunCheckCommand(Session& session, const Options& options, Output& output) {
  session.OpenAsItIs();
  auto findings = session.Log().Check();
  if (findings.empty() && !core::IsLog(session.Log()))
    session.Fail("MN_ERR_DBNOTVALID"_key, {{"strFile", session.LogFile()}});
  // What a log of the earlier program lacks it gets when it is converted.
  if (!session.LogIsOld())
    for (std::string& finding : core::CheckLog(session.Log())) findings.push_back(std::move(finding));
  for (const std::string& finding : findings) output.Write(OneLine(finding) + "\n");
  if (!findings.empty()) session.Fail("VC_ERR_DAMAGED"_key, {{"strError", session.LogFile()}});
  if (seals::HasSeals(session.Log())) VerifySeals(session, options, output);
  output.Write("ok\n");
}

}  // namespace varnlog::cli
