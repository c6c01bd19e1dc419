#include "cli/Command.h"
#include "core/EngineMessages.h"
#include "platform/Files.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

std::string SizeOf(const std::string& file) {
  return std::to_string(platform::FileSize(platform::ToPath(file)).value_or(0));
}

}  // namespace

void RunCompactCommand(Session& session, const Options& /*options*/, Output& output) {
  session.RefuseOldLog();
  session.RefuseServersWork();
  // Opening it first keeps the operation away from files that are no log.
  session.OpenLog(Session::Access::kRead);
  session.CloseLog();
  const std::string before = SizeOf(session.LogFile());
  session.Engine().CompactDatabase(session.LogFile());
  if (session.Engine().LastNumber() != 0) {
    session.Fail("PP_ERR_COMPACT"_key,
                 {{"strError", core::EngineErrorText(session.texts(), session.Engine())}});
  }
  output.Write("before " + before + ", after " + SizeOf(session.LogFile()) + "\n");
}

}  // namespace varnlog::cli
