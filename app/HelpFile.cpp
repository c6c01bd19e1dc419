#include "app/HelpFile.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/Installation.h"
#include "db/modCommon.h"
#include "platform/Files.h"

namespace varnlog::app {

std::string HelpFile(const core::Globals& globals) {
  const auto folder = platform::ToPath(core::DeliveredFile(globals, core::kHelpFolder));
  const auto file = [&folder](std::string_view code) {
    const std::string name = "varnlog-" + std::string(code) + ".qch";
    return platform::FromPath(folder / platform::ToPath(name));
  };
  std::string own = file(globals.LanguageGl);
  return db::FileExists(own) ? own : file("D");
}

std::string_view HelpPageOf(std::string_view dialog) {
  static constexpr std::pair<std::string_view, std::string_view> kPages[] = {
      {"frmPatSearch", "patients"},  {"frmBegEnd", "patients"},       {"frmRunUpdate", "update"},
      {"frmCancelUpdate", "update"}, {"frmUpdateNotices", "update"},  {"frmProperties", "datafiles"},
      {"frmPrinter", "printing"},    {"frmPrinterSetup", "printing"}, {"frmConvert", "oldlogs"},
      {"frmAbout", "overview"},
  };
  const auto* const page = std::find_if(std::begin(kPages), std::end(kPages),
                                        [&](const auto& row) { return row.first == dialog; });
  return page == std::end(kPages) ? "trouble" : page->second;
}

}  // namespace varnlog::app
