#include "tests/Paths.h"
#include "tests/desktop/RealProgram.h"
#include "tests/support/Table.h"
#include "tests/support/TestFolder.h"

namespace varnlog::desktop {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;

class Start : public RealProgram {
 protected:
  Start() : RealProgram(0) {}

  [[nodiscard]] std::string Ini() const { return test::ReadFile(installation_.program() / "varnlog.ini"); }
};

TEST_F(Start, AnotherCopyBringsTheFirstToTheFrontAndLeavesTheSettingsAlone) {
  StartsAndUpdates();
  desktop_.TakesFocusAway();
  desktop_.Sees([](const Part& part) { return part.Role() == "TopWindow" && !part.IsFocused(); }, "no focus");
  installation_.SetLanguage("GB");
  const std::string before = Ini();
  EXPECT_EQ(desktop_.StartsAnother(), 0);
  desktop_.Sees([](const Part& part) { return part.Role() == "TopWindow" && part.IsFocused(); }, "the focus");
  EXPECT_EQ(Ini(), before);
  Quits();
}

TEST_F(Start, ALanguageThatDoesNotExistIsGerman) {
  installation_.SetLanguage("XX");
  StartsAndUpdates();
  Quits();
  desktop_.Starts({"--language", "GB"});
  desktop_.Sees(Named("MenuItem", "File"), "an English menu");
  desktop_.Presses("ctrl+q");
  desktop_.ClicksOn(Named("Button", "Yes"), "Yes");
  EXPECT_EQ(desktop_.Ends(), 0);
}

TEST_F(Start, CommandLinesEndAsTheySay) {
  const std::string program = "QT_QPA_PLATFORM=none '" VARNLOG_PROGRAM_DIR "/varnlog' ";
  const std::string nowhere = "'" + (installation_.suite() / "kein Ordner").string() + "'";
  const Table<std::string, int, std::string, std::string> rows = {
      {"--help", 0, "--folder", ""},
      {"--version", 0, "varnlog 1.", ""},
      {"--nonsense", 2, "", "nonsense"},
      {"--folder", 2, "", "folder"},
      {"a.mdb b.mdb", 2, "", "only one"},
      {"--inspect", 2, "", "--inspect"},
      {"--help --folder " + nowhere, 0, "--language", ""}};
  for (const auto& [arguments, status, out, err] : rows) {
    const cli::Ended ended = installation_.Shell(program + arguments);
    EXPECT_EQ(ended.status, status) << arguments;
    EXPECT_NE(ended.out.find(out), std::string::npos) << arguments << ": " << ended.out;
    EXPECT_NE(ended.err.find(err), std::string::npos) << arguments << ": " << ended.err;
    EXPECT_EQ(ended.err.empty(), err.empty()) << arguments << ": " << ended.err;
  }
  const cli::Ended lost =
      installation_.Shell("QT_QPA_PLATFORM=offscreen '" VARNLOG_PROGRAM_DIR "/varnlog' --folder " + nowhere);
  EXPECT_EQ(lost.status, 1);
  EXPECT_NE(lost.err.find("kein Ordner"), std::string::npos) << lost.err;
}

}  // namespace
}  // namespace varnlog::desktop
