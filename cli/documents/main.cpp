#include <array>

#include "cli/DocumentCommands.h"
#include "cli/Program.h"
#include "cli/documents/Documents.h"

namespace {

using namespace varnlog::cli;

constexpr Command Done(Command command, decltype(Command::run) run,
                       decltype(Command::validate) validate = ValidateSelection) {
  command.run = run;
  command.validate = validate;
  return command;
}

constexpr std::array kCommands = {
    Done(kExportCommand, RunExportCommand, ValidateExport),
#ifdef VARNLOG_HAS_REPORT  // not in a build without Qt
    Done(kReportCommand, RunReportCommand),
    Done(kInspectionCommand, RunInspectionCommand),
#endif
};

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, kCommands);
}
