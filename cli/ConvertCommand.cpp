#include <filesystem>

#include <CLI/CLI.hpp>

#include "cli/Command.h"
#include "core/Installation.h"
#include "db/modCommon.h"
#include "legacy/Conversion.h"
#include "platform/Files.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;
using legacy::ConversionResult;
using legacy::ConversionStep;

/// One bar for both passes over the exposures.
class TerminalConversion final : public legacy::ConversionView {
 public:
  explicit TerminalConversion(TerminalDialog& user) : user_(user) {}

  void Begin(ConversionStep step, std::int64_t exposures) override {
    before_ = step == ConversionStep::kComparing ? exposures : 0;
    user_.SetRecordCount(2 * exposures);
  }
  [[nodiscard]] bool Advance(std::int64_t exposuresDone) override {
    user_.Advance(before_ + exposuresDone);
    return true;
  }
  core::MessageAnswer Show(const core::Message& message) override { return user_.Show(message); }
  void Beep() override { user_.Beep(); }

 private:
  TerminalDialog& user_;
  std::int64_t before_ = 0;
};

std::string Summary(const Session& session, const ConversionResult& result) {
  const auto date = [](platform::DateTime when) { return when.IsSet() ? when.ToIso() : std::string("-"); };
  const std::string rows = session.Text("CV_SUMMARY"_key, {{"lngCount", std::to_string(result.rows)},
                                                           {"dFirst", date(result.found.first)},
                                                           {"dLast", date(result.found.last)}});
  const std::string compared =
      session.Text("CV_COMPARED"_key, {{"lngValues", std::to_string(result.comparedValues)}});
  std::string summary = rows + "\n" + compared + "\n";
  if (!result.replacedFile.empty()) {
    summary += session.Text("CV_REPLACED"_key, {{"strFile", platform::FromPath(result.replacedFile)}}) + "\n";
  }
  return summary;
}

}  // namespace

void AddConvertOptions(CLI::App& command, Options& options) {
  command.add_option("OLD.mdb", options.oldLog, "the old log; it is only read")
      ->required()
      ->transform(FromCurrentFolder);
  command.add_option("NEW.mdb", options.newLog, "the new log")->required()->transform(FromCurrentFolder);
  command.add_flag("--partial", options.partial, "take over what can be read of a damaged log");
  command.add_flag("--overwrite", options.overwrite,
                   "replace NEW.mdb if it exists; the replaced file is kept beside it");
}

void RunConvertCommand(Session& session, const Options& options, Output& output) {
  if (!db::FileExists(options.oldLog)) session.Fail("VC_ERR_NODATAFILE"_key, {{"strFile", options.oldLog}});
  const legacy::ConversionContext context{
      dao::DBEngine::Instance(), session.texts(),
      platform::ToPath(core::DeliveredFile(session.globals(), core::kEmptyLog)), session.globals().AuthorGl,
      session.clock()};
  const legacy::ConversionChoices choices{
      .damaged = options.partial ? legacy::DamagedLog::kTakeReadable : legacy::DamagedLog::kRefuse,
      .overwrite = options.overwrite};
  TerminalConversion view(session.user());
  const ConversionResult result = legacy::ConvertTo(context, platform::ToPath(options.oldLog),
                                                    platform::ToPath(options.newLog), choices, view);
  session.user().Flush();
  using Outcome = ConversionResult::Outcome;
  if (result.outcome == Outcome::kNotNeeded) session.Fail("CV_ERR_FORMAT"_key, {{"strFile", options.oldLog}});
  if (result.outcome != Outcome::kDone) throw JobError("");
  output.Write(Summary(session, result));
}

}  // namespace varnlog::cli
