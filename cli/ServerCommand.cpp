#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/dao/ServerState.h"
#include "db/modCommon.h"
#include "platform/Files.h"
#include "server/ServerLog.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

server::TransferProgress ReportTo(TerminalDialog& user) {
  return [&user](std::int64_t rows) {
    user.Advance(rows);
    return true;
  };
}

std::string Summary(const server::Transfer& transfer) {
  return "exposures " + std::to_string(transfer.exposures) + ", entries " + std::to_string(transfer.entries) +
         ", values compared " + std::to_string(transfer.values) + ", head " +
         std::to_string(transfer.head.number) + " " + transfer.head.digest + "\n";
}

void Adopt(Session& session, const Options& options, Output& output) {
  if (!db::FileExists(options.newLog)) session.Fail("VC_ERR_NODATAFILE"_key, {{"strFile", options.newLog}});
  output.Write(Summary(
      server::AdoptLog(dao::DBEngine::Instance(), options.link, options.newLog, ReportTo(session.user()))));
}

void Export(Session& session, const Options& options, Output& output) {
  const auto emptyLog = platform::ToPath(core::DeliveredFile(session.globals(), core::kEmptyLog));
  output.Write(Summary(server::ExportLog(dao::DBEngine::Instance(), options.link, emptyLog, options.newLog,
                                         ReportTo(session.user()))));
}

void WriteList(Output& output, const std::string& name, const std::vector<std::string>& lines) {
  output.Write(name + std::to_string(lines.size()) + "\n");
  for (const std::string& line : lines) output.Write("  " + OneLine(line) + "\n");
}

void Check(Session& session, const Options& options, Output& output) {
  const auto workspace = dao::DBEngine::Instance().CreateWorkspace("ServerWs", "Admin", "");
  const auto log = workspace->OpenDatabase(options.link, false, true);
  const auto state = log->Server();
  if (!state) session.Fail("VC_ERR_NOLINK"_key, {{"strFile", options.link}});
  output.Write("server " + state->version + ", " + (state->host.empty() ? "this machine" : state->host) +
               "\n");
  output.Write("database " + state->database + ", schema " + state->schema + "\n");
  output.Write("encryption " + (state->encryption.empty() ? "none" : state->encryption) + "\n");
  output.Write("account " + state->account + (state->isOwner ? ", owner of the log\n" : "\n"));
  output.Write("order of texts " + state->textOrder + "\n");
  output.Write("bytes " + std::to_string(state->bytes) + "\n");
  output.Write(state->isStandby ? "follows another server, can only be read\n" : "can be written\n");
  WriteList(output, "replicas ", state->replicas);
  WriteList(output, "connected ", state->connected);
  auto findings = log->Check();
  if (!log->HasRules(seals::LogRules()))
    findings.emplace_back("rules of the log are missing or switched off");
  for (const std::string& finding : findings) output.Write(OneLine(finding) + "\n");
  if (!findings.empty()) session.Fail("VC_ERR_DAMAGED"_key, {{"strError", options.link}});
  output.Write("ok\n");
}

void Init(Session& /*session*/, const Options& options, Output& output) {
  server::InitLog(options.link, !options.partition.empty());
  output.Write("ok\n");
}

struct Action {
  const char* name;
  const char* description;
  void (*run)(Session& session, const Options& options, Output& output);
  bool takesLog = false;
};

constexpr Action kActions[] = {
    {"init", "make the log's schema, rules and roles, or put back what is missing of them", Init},
    {"adopt", "take a file's log over into the empty one on the server", Adopt, true},
    {"export", "write the log on the server into a new file", Export, true},
    {"check", "say what server it is and what is wrong with the log there", Check},
};

}  // namespace

void AddServerOptions(CLI::App& command, Options& options) {
  command.require_subcommand(1);
  for (const Action& action : kActions) {
    CLI::App* const sub = command.add_subcommand(action.name, action.description);
    sub->add_option("LINK", options.link, "the link file")->required()->transform(FromCurrentFolder);
    if (action.takesLog)
      sub->add_option("LOG.mdb", options.newLog, "the log file")->required()->transform(FromCurrentFolder);
    if (action.run == Init)
      sub->add_option("--partition", options.partition, "keep the exposures in one table a year")
          ->check(CLI::IsMember({"year"}));
    sub->callback([&options, &action] { options.action = action.name; });
  }
}

void RunServerCommand(Session& session, const Options& options, Output& output) {
  if (!db::FileExists(options.link)) session.Fail("VC_ERR_NODATAFILE"_key, {{"strFile", options.link}});
  for (const Action& action : kActions) {
    if (options.action != action.name) continue;
    try {
      action.run(session, options, output);
    } catch (const dao::EngineError& error) {
      std::string meaning = core::EngineErrorText(session.texts(), error);
      // Some meanings hold the engine's own words already.
      if (meaning.find(error.what()) == std::string::npos) meaning.append("\n").append(error.what());
      session.FailWith(meaning);
    }
  }
  session.user().Flush();
}

}  // namespace varnlog::cli
