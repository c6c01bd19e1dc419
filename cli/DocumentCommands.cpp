#include "cli/DocumentCommands.h"

#include <CLI/CLI.hpp>

namespace varnlog::cli {

namespace {

void AddOutput(CLI::App& command, Options& options, const char* what, const char* form) {
  command.add_option("--output", options.output, what)
      ->required()
      ->transform(FromCurrentFolder)
      ->option_text(form);
}

}  // namespace

void AddExportOptions(CLI::App& command, Options& options) {
  AddSelectionOptions(command, options);
  AddOutput(command, options, "the file to write; its ending says in which form", "FILE.xlsx|.csv|.json");
  command.add_flag("--overwrite", options.overwrite, "replace the file if it is there already");
}

void AddReportOptions(CLI::App& command, Options& options) {
  AddSelectionOptions(command, options);
  AddOutput(command, options, "the PDF file to write", "FILE.pdf");
  command.add_flag("--with-entries", options.withEntries,
                   "below each exposure what was entered or changed later, when, by whom and where");
  command.add_flag("--oldest-first", options.oldestFirst, "oldest exposures first");
}

void AddInspectionOptions(CLI::App& command, Options& options) {
  constexpr int kMostPatients = 1'000;
  command.add_option("--from", options.from, "first day")->required()->option_text("DATE");
  command.add_option("--to", options.to, "last day")->required()->option_text("DATE");
  AddOutput(command, options, "the folder in which the folder and its archive are made", "DIR");
  command.add_option("--patients", options.patients, "how many patients of each type are listed in full")
      ->check(CLI::Range(0, kMostPatients));
  command.add_flag("--with-comments", options.withComments, "for the quality body instead of the authority");
  command.add_flag("--oldest-first", options.oldestFirst, "oldest exposures first");
}

}  // namespace varnlog::cli
