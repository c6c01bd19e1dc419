#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Commands.h"
#include "app/HelpFile.h"
#include "core/Languages.h"
#include "tests/Paths.h"
#include "tests/support/TestFolder.h"

namespace varnlog::app {
namespace {

namespace fs = std::filesystem;

fs::path HelpFolder() {
  return fs::path(VARNLOG_SOURCE_DIR) / "resources" / "help";
}

std::string Page(const std::string& language, const std::string& name) {
  return test::ReadFile(HelpFolder() / platform::ToPath(language) / platform::ToPath(name + ".html"));
}

std::vector<std::string> PageNames() {
  std::ifstream list(HelpFolder() / "pages.txt");
  return {std::istream_iterator<std::string>(list), {}};
}

/// What a translation leaves as it is: captions, links, keys, and how many of each element there are.
std::multiset<std::string> Bones(const std::string& page) {
  static const std::regex bone(R"(\{[^}]*\}|<kbd>.*?</kbd>|<(?:h2|li|tr|td|b)>)");
  return {std::sregex_token_iterator(page.begin(), page.end(), bone), {}};
}

TEST(HelpPages, SayTheSameInEachLanguage) {
  for (const std::string& name : PageNames()) {
    const auto german = Bones(Page("D", name));
    for (const auto& each : core::kLanguages) {
      const std::string language(each.code);
      const std::string page = Page(language, name);
      EXPECT_EQ(Bones(page), german) << language << ' ' << name;
      EXPECT_GT(page.size(), Page("D", name).size() / 2) << language << ' ' << name;
    }
  }
}

TEST(HelpPages, TheKeyboardPageNamesEveryShortcut) {
  const std::string page = Page("D", "keyboard");
  for (const CommandDef& command : AllCommands()) {
    const std::string key = "<kbd>" + std::string(command.shortcut) + "</kbd>";
    if (!command.shortcut.empty()) {
      EXPECT_THAT(page, testing::HasSubstr(key)) << command.name;
    }
  }
}

TEST(HelpPages, EveryDialogHasAPageThatExists) {
  for (const char* dialog :
       {"frmPatSearch", "frmBegEnd", "frmRunUpdate", "frmCancelUpdate", "frmUpdateNotices", "frmProperties",
        "frmPrinter", "frmPrinterSetup", "frmConvert", "frmVerify", "frmAbout", "MessageBox", ""}) {
    EXPECT_THAT(PageNames(), testing::Contains(HelpPageOf(dialog))) << dialog;
  }
  const std::pair<const char*, const char*> topics[] = {
      {"RC_XRNOTUPDATED", "update"}, {"RS_ERR_CHANGE", "entering"},     {"PS_ERR_NOTFOUND", "patients"},
      {"MN_OPENXRLOG", "datafiles"}, {"DRS_SAVEPDF_TITLE", "printing"}, {"CV_ASK", "oldlogs"},
      {"SL_ANCHOR", "history"},      {"MN_ERR_DBOPEN", "trouble"},      {"", "trouble"}};
  for (const auto& [key, page] : topics) {
    EXPECT_EQ(HelpPageOf("MessageBox", key), page) << key;
    EXPECT_THAT(PageNames(), testing::Contains(page));
  }
}

// Read aloud or searched for, a Latin letter in a Russian word is another word.
TEST(HelpPages, RussianWordsAreCyrillicThroughoutAndFrenchMarksHaveTheirSpace) {
  const std::regex mixed("[\xD0\xD1][\x80-\xBF][A-Za-z]|[A-Za-z][\xD0\xD1][\x80-\xBF]");
  const std::regex bareMark(R"((?:[^\xA0]|[^\xC2]\xA0)[:;!]|[^>a-z\xA0]\?)");
  for (const std::string& name : PageNames()) {
    std::smatch found;
    const std::regex markup(R"(<[^>]*>|\{[^}]*\})");
    const std::string russian = std::regex_replace(Page("CYR", name), markup, "|");
    EXPECT_FALSE(std::regex_search(russian, found, mixed)) << name << ": " << found.prefix().str();
    const std::string french = std::regex_replace(Page("F", name), markup, ">");
    EXPECT_FALSE(std::regex_search(french, found, bareMark)) << name << ": " << found.prefix().str();
  }
}

}  // namespace
}  // namespace varnlog::app
