#include "cli/Command.h"
#include "start/RepairLog.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

void WriteEach(Output& output, std::string_view what, const std::vector<std::string>& lines) {
  constexpr std::size_t kMost = 20;
  for (std::size_t i = 0; i < lines.size() && i < kMost; ++i)
    output.Write(std::string(what) + ": " + OneLine(lines[i]) + "\n");
  if (lines.size() > kMost)
    output.Write(std::string(what) + ": " + std::to_string(lines.size() - kMost) + " more\n");
}

void WriteReport(Output& output, const start::LogRepair& repair) {
  constexpr std::size_t kMostIds = 2000;
  WriteEach(output, "damaged", repair.damage);
  WriteEach(output, "restored", repair.restored);
  if (!repair.damage.empty()) output.Write("read: " + std::to_string(repair.exposures) + " exposures\n");
  if (!repair.missing.empty())
    output.Write("missing: " + std::to_string(dao::CountOf(repair.missing)) + " exposures, numbers " +
                 dao::RangesText(repair.missing, kMostIds) + "\n");
  if (!repair.damagedFile.empty()) output.Write("damaged file: " + OneLine(repair.damagedFile) + "\n");
  WriteEach(output, "wrong", repair.remaining);
}

}  // namespace

void RunRepairCommand(Session& session, const Options& /*options*/, Output& output) {
  session.RequireLogFile();
  session.RefuseOldLog();
  session.RefuseServersWork();
  const start::LogRepair repair =
      start::RepairLog(session.Engine(), session.LogFile(), session.globals().AuthorGl, session.clock());
  WriteReport(output, repair);
  if (!repair.IsWhole()) session.FailWith(start::RepairText(session.texts(), repair));
  output.Write("ok\n");
}

}  // namespace varnlog::cli
