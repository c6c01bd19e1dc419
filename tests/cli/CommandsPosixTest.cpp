#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class CommandsOnPosixTest : public testing::Test {
 protected:
  Installation installation_{"posix"};
};

TEST_F(CommandsOnPosixTest, OutputThatCannotBeWrittenIsAnErrorWithAReason) {
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  ASSERT_EQ(installation_.Ctl("update").status, 0);
  const Ended full = installation_.Shell(installation_.CtlCommand() + " list >/dev/full");
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.err, HasSubstr("No space left"));
  const Ended closed = installation_.Shell("{ sleep 0.2; " + installation_.CtlCommand() +
                                           " list; echo \"status $?\" >&2; } | true");
  EXPECT_THAT(closed.err, HasSubstr("Broken pipe"));
  EXPECT_THAT(closed.err, HasSubstr("status 1"));
}

TEST_F(CommandsOnPosixTest, RunsNoLibraryThatStrangersCouldHavePutThere) {
  installation_.MakeLog();
  const std::string named = " --file '" + installation_.log().string() + "'";
  for (const fs::path& open : {installation_.suite(), installation_.suite() / "KVFILEDB.DLL"}) {
    fs::permissions(open, fs::perms::others_write, fs::perm_options::add);
    const Ended run = installation_.Ctl("update" + named);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr(open.filename().string()));
    EXPECT_EQ(installation_.Ctl("list").status, 1);
    EXPECT_EQ(installation_.Ctl("check" + named).out, "ok\n") << "needs no library";
    fs::permissions(open, fs::perms::others_write, fs::perm_options::remove);
  }
  EXPECT_EQ(installation_.Ctl("update" + named).status, 0);
}

// Found beside the program itself, wherever it is called from, and called with the very same words.
TEST_F(CommandsOnPosixTest, TheProgramOfDocumentsEndsAsItsCallerWouldAndIsMissed) {
  installation_.MakeLog();
  const Ended wrong = installation_.Ctl("export --output 'zwei Wörter.txt'");
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.err, HasSubstr("zwei Wörter.txt"));
  const Ended full = installation_.Shell(
      installation_.CtlCommand() +
      " inspection --from 2024-01-01 --to 2024-12-31 --output . >/dev/full; echo \"status $?\"");
  EXPECT_EQ(full.out, "status 1\n");
  const fs::path alone = installation_.suite() / "varnlogctl";
  fs::copy_file(fs::path(VARNLOG_PROGRAM_DIR) / "varnlogctl", alone);
  const std::string call = "'" + alone.string() + "' --folder '" + installation_.program().string() + "' ";
  EXPECT_EQ(installation_.Shell(call + "list").status, 0);
  const Ended missed = installation_.Shell(call + "report --output x.pdf");
  EXPECT_EQ(missed.status, 1);
  EXPECT_THAT(missed.err, HasSubstr("ließ sich nicht starten"));
  EXPECT_THAT(missed.err, HasSubstr((installation_.suite() / "varnlogdocs").string()));
}

}  // namespace
}  // namespace varnlog::cli
