#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace varnlog::cli
