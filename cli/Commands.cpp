#include <array>

#include "cli/DocumentCommands.h"

namespace varnlog::cli {

namespace {

constexpr std::array kCommands = {
    Command{"update", "take the exposures that the imaging suite reported into the log", AddUpdateOptions,
            nullptr, RunUpdateCommand, Command::Works::kOnLogAndSuite},
    Command{"list", "print rows of the log", AddListOptions, ValidateSelection, RunListCommand},
    kExportCommand,
    Command{"statistics", "print how many exposures of what kind there are, repeats and doses",
            AddHistoryOptions, ValidateSelection, RunStatisticsCommand},
#ifdef VARNLOG_HAS_REPORT  // not in a build without Qt
    kReportCommand,
    kInspectionCommand,
#endif
    Command{"convert", "take the rows of a log of the earlier program into a new log", AddConvertOptions,
            nullptr, RunConvertCommand, Command::Works::kOnFiles},
    Command{"check", "verify the log file", nullptr, nullptr, RunCheckCommand},
    Command{"verify", "recompute the seals of the log and see whether anything was changed", AddVerifyOptions,
            ValidateAnchor, RunVerifyCommand},
    Command{"history", "print who entered and changed what, when and where", AddHistoryOptions,
            ValidateSelection, RunHistoryCommand},
    Command{"compact", "rewrite the log file without the room that it no longer needs", nullptr, nullptr,
            RunCompactCommand},
    Command{"repair", "mend a damaged log file as far as its rows can be read", nullptr, nullptr,
            RunRepairCommand},
    Command{"backup", "copy the log into a folder while others work, and check the copy", AddBackupOptions,
            nullptr, RunBackupCommand},
    Command{"server", "make, fill, read out or look at a log on a server", AddServerOptions, nullptr,
            RunServerCommand, Command::Works::kOnFiles},
    Command{"restore", "give the log the content of a copy", AddRestoreOptions, nullptr, RunRestoreCommand},
};

}  // namespace

std::span<const Command> AllCommands() {
  return kCommands;
}

}  // namespace varnlog::cli
