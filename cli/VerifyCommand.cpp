#include <optional>

#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "seals/Verifier.h"
#include "start/VerifyText.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

std::optional<seals::Anchor> AnchorOf(const Options& options) {
  if (options.anchor.empty()) return std::nullopt;
  const auto anchor = seals::ReadAnchor(options.anchor);
  if (!anchor) throw UsageError("VC_ERR_ANCHOR"_key, "strAnchor", options.anchor);
  return anchor;
}

}  // namespace

void AddVerifyOptions(CLI::App& command, Options& options) {
  command.add_option(
      "--anchor", options.anchor,
      "a state that the log must still contain: NUMBER-DIGEST, or the text of a printed report");
}

void ValidateAnchor(const Options& options) {
  static_cast<void>(AnchorOf(options));
}

seals::Verification VerifySeals(Session& session, const Options& options, Output& output) {
  const seals::Verification result = seals::Verify(session.Log(), AnchorOf(options), session.Progress());
  session.user().Flush();
  for (const std::string& line : start::VerifyLines(result, session.texts())) output.Write(line + "\n");
  if (!result.IsSound()) {
    session.Fail("VC_ERR_VERIFY"_key,
                 {{"lngCount", std::to_string(result.allFindings)}, {"strFile", session.LogFile()}});
  }
  return result;
}

// Nothing is sealed or brought up to date: what is verified is the file as it is.
void RunVerifyCommand(Session& session, const Options& options, Output& output) {
  session.OpenAsItIs();
  const seals::Verification result = VerifySeals(session, options, output);
  output.Write("sealed: " + std::to_string(result.exposures) + " exposures, " +
               std::to_string(result.entries) + " entries, " + std::to_string(result.seals) +
               " seals, head " + std::to_string(result.head.number) + " " + result.head.digest + "\n");
}

}  // namespace varnlog::cli
