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

std::string_view HelpPageOf(std::string_view dialog, std::string_view textKey) {
  static constexpr std::pair<std::string_view, std::string_view> kDialogs[] = {
      {"frmPatSearch", "patients"},   {"frmBegEnd", "patients"},       {"frmRunUpdate", "update"},
      {"frmCancelUpdate", "update"},  {"frmUpdateNotices", "update"},  {"frmProperties", "datafiles"},
      {"frmPrinter", "printing"},     {"frmPrinterSetup", "printing"}, {"frmConvert", "oldlogs"},
      {"frmVerify", "history"},       {"frmAbout", "overview"},        {"frmStatistics", "statistics"},
      {"frmInspection", "exporting"}, {"frmBackup", "datafiles"},      {"frmSettings", "datafiles"},
  };
  // Keys carry the prefix of the window that uses them.
  static constexpr std::pair<std::string_view, std::string_view> kKeys[] = {
      {"RU_", "update"},
      {"CU_", "update"},
      {"RC_XRNOTUPDATED", "update"},
      {"MN_NOXR", "update"},
      {"RS_", "entering"},
      {"RC_QUIT", "entering"},
      {"PS_", "patients"},
      {"BE_", "patients"},
      {"PP_", "datafiles"},
      {"MN_OPENXRLOG", "datafiles"},
      {"EX_", "exporting"},
      {"ST_", "statistics"},
      {"IN_", "exporting"},
      {"BK_", "datafiles"},
      {"SE_", "datafiles"},
      {"FD_", "selections"},
      {"DRS_", "printing"},
      {"MN_ERR_NOPRINTER", "printing"},
      {"CV_", "oldlogs"},
      {"SL_", "history"},
  };
  const auto* const page =
      std::ranges::find_if(kDialogs, [dialog](const auto& row) { return row.first == dialog; });
  if (page != std::end(kDialogs)) return page->second;
  const auto* const topic =
      std::ranges::find_if(kKeys, [textKey](const auto& row) { return textKey.starts_with(row.first); });
  return topic == std::end(kKeys) ? "trouble" : topic->second;
}

}  // namespace varnlog::app
