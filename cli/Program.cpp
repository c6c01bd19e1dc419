#include "cli/Program.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "core/EngineMessages.h"
#include "platform/Files.h"
#include "platform/LibraryMemory.h"
#include "platform/Process.h"
#include "platform/Terminal.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

/// Whatever draws or writes for other programs to read: what it needs would be loaded with every intake.
constexpr const char* kDocumentsProgram = "varnlogdocs";

enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUsage = 2 };

/// Without memory nothing can be done in good order, least of all in destructors. The next run carries on
/// from here as after a power cut.
[[noreturn]] void EndWithoutMemory() {
  std::fputs("varnlogctl: out of memory\n", stderr);
  std::_Exit(kFailed);
}

/// A library may throw where nothing can be caught.
[[noreturn]] void EndWithoutHandler() {
  try {
    if (std::current_exception()) std::rethrow_exception(std::current_exception());
  } catch (const std::bad_alloc&) {
    EndWithoutMemory();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "varnlogctl: %s\n", error.what());
  }
  std::abort();
}

void WriteError(const std::string& text) {
  if (!text.empty()) std::fprintf(stderr, "varnlogctl: %s\n", OneLine(text).c_str());
}

/// What a command found out before it failed is written all the same.
void RunCommand(const Command& command, Session& session, const Options& options) {
  Output output(stdout);
  try {
    command.run(session, options, output);
  } catch (const OutputError&) {
    throw;
  } catch (const std::exception&) {
    output.Flush();
    throw;
  }
  output.Flush();
}

void RunJob(const Command& command, Session& session, const Options& options) {
  try {
    switch (command.works) {
      case Command::Works::kOnFiles:
        session.OpenWorkspace();
        break;
      case Command::Works::kOnTheLog:
        session.Start(Session::Suite::kForTheLog);
        break;
      case Command::Works::kOnLogAndSuite:
        session.Start(Session::Suite::kAlways);
    }
    RunCommand(command, session, options);
  } catch (const OutputError& error) {
    session.Fail("VC_ERR_OUTPUT"_key, {{"strError", error.code().message()}});
  } catch (const dao::EngineError& error) {
    session.Fail("VC_ERR_READ"_key, {{"strError", core::EngineErrorText(session.texts(), error)}});
  }
}

void CheckUsage(const Command& command, const Session& session, const Options& options) {
  if (command.validate == nullptr) return;
  try {
    command.validate(options);
  } catch (const UsageError& error) {
    WriteError(OneLine(session.Text(error.key, {{error.name, error.value}})));
    WriteError(OneLine(session.Text("VC_TRYHELP"_key)));
    throw;
  }
}

/// Comes back only when there is nobody to hand over to.
void HandOver(const std::vector<std::string>& arguments, const Options& options) {
  const auto program =
      platform::ExecutableFolder() / platform::ToPath(platform::ProgramFile(kDocumentsProgram));
  const std::error_code error = platform::GoOnAs(program, arguments);
  Session(options).Fail("VC_ERR_PROGRAM"_key,
                        {{"strFile", platform::FromPath(program)}, {"strError", error.message()}});
}

ExitStatus Run(const Command& command, const Options& options, const std::vector<std::string>& arguments) {
  try {
    if (command.run == nullptr) HandOver(arguments, options);
    Session session(options);
    CheckUsage(command, session, options);
    RunJob(command, session, options);
    return kDone;
  } catch (const UsageError&) {
    return kWrongUsage;
  } catch (const std::exception& error) {
    WriteError(error.what());
    return kFailed;
  }
}

int ParseAndRun(const std::vector<std::string>& arguments, std::span<const Command> commands) {
  CLI::App app("The X-ray exposure log without a window.", "varnlogctl");
  app.set_version_flag("--version", "varnlogctl " VARNLOG_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  Options options;
  AddCommonOptions(app, options);
  const Command* chosen = nullptr;
  for (const Command& command : commands) {
    CLI::App* sub = app.add_subcommand(command.name, command.description);
    if (command.addOptions != nullptr) command.addOptions(*sub, options);
    sub->callback([&chosen, &command] { chosen = &command; });
  }
  try {
    // The parser takes what is left from the end.
    std::vector<std::string> words(arguments.rbegin(), arguments.rend());
    if (!words.empty()) words.pop_back();
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;  // help and version are exits too
  }
  return Run(*chosen, options, arguments);
}

}  // namespace

int RunProgram(int argc, char** argv, std::span<const Command> commands) {
  std::set_new_handler(EndWithoutMemory);
  platform::GuardLibraryMemory();
  std::set_terminate(EndWithoutHandler);
  platform::PrepareStandardStreams();
  try {
    return ParseAndRun(platform::ProgramArguments(argc, argv), commands);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "varnlogctl: %s\n", error.what());
    return kFailed;
  }
}

}  // namespace varnlog::cli
