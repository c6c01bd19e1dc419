#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"
#include "tests/support/TestFolder.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

using test::ReadFile;

class ConvertCommandTest : public testing::Test {
 protected:
  void SetUp() override { installation_.SetLanguage("GB"); }
  /// An old log, cut to its first `length` bytes.
  void HasOldLog(const std::string& sample, std::size_t length = std::string::npos) {
    const fs::path file = fs::path(VARNLOG_SOURCE_DIR) / "tests/data/jet" / platform::ToPath(sample);
    Installation::Write(old_, ReadFile(file).substr(0, length));
  }
  Ended Converts(const std::string& options = "") {
    return installation_.Ctl("convert '" + old_.string() + "' '" + new_.string() + "' " + options);
  }
  Ended OnOldLog(const std::string& command) {
    return installation_.Ctl(command + " --file '" + old_.string() + "'");
  }

  /// What bears the new log's name and this ending.
  [[nodiscard]] fs::path Beside(const char* ending) const {
    return new_.parent_path() / (new_.filename() += ending);
  }

  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  fs::path old_ = installation_.suite() / "Data" / "Alt.mdb";
  fs::path new_ = installation_.suite() / "Data" / "Neu.mdb";
};

TEST_F(ConvertCommandTest, MakesANewLogWithTheSameRows) {
  HasOldLog("log-1.1-jet4-scratch.mdb");
  const std::string before = ReadFile(old_);
  Installation::Write(Beside("-journal"), "of a log that was moved away");
  const std::string listed = OnOldLog("list --format csv").out;
  const Ended run = Converts();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "Exposures: 262, first: 1895-11-08 17:30:01, last: 1998-02-08 11:51:45\n"
            "Values compared: 6,556, all equal\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(ReadFile(old_), before);
  EXPECT_EQ(installation_.Ctl("list --format csv --file '" + new_.string() + "'").out, listed);
  EXPECT_EQ(installation_.Ctl("check --file '" + new_.string() + "'").out, "ok\n");
  EXPECT_EQ(ReadFile(Beside("-journal.aside")), "of a log that was moved away");
  EXPECT_EQ(std::distance(fs::directory_iterator(new_.parent_path()), {}), 3);
}

TEST_F(ConvertCommandTest, ReplacesALogOnlyWhenTold) {
  HasOldLog("log-1.1-jet3-cp1251.mdb");
  Installation::Write(new_, "last year's");
  const Ended refused = Converts();
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("will not be overwritten"));
  EXPECT_EQ(ReadFile(new_), "last year's");
  fs::permissions(old_, fs::perms::owner_read | fs::perms::owner_write);
  const Ended replaced = Converts("--overwrite");
  EXPECT_EQ(replaced.status, 0);
  EXPECT_THAT(replaced.out, HasSubstr("Neu.mdb.replaced"));
  EXPECT_EQ(ReadFile(Beside(".replaced")), "last year's");
  EXPECT_EQ(fs::status(new_).permissions(), fs::status(old_).permissions()) << "for whom the old log was";
  EXPECT_THAT(installation_.Ctl("list --format csv --file '" + new_.string() + "'").out, HasSubstr("Щука"));

  fs::copy_file(new_, installation_.log());
  new_ = installation_.log();
  installation_.WithLog(true, [&](dao::Database&) { EXPECT_EQ(Converts("--overwrite").status, 1); });
  EXPECT_EQ(Converts("--overwrite").status, 0);
}

TEST_F(ConvertCommandTest, RefusesWhatIsNoOldLogAndWrongUsage) {
  EXPECT_EQ(Converts().status, 1) << "no such file";
  HasOldLog("foreign-jet4.mdb");
  EXPECT_THAT(Converts().err, HasSubstr("is not an X-ray log book"));
  EXPECT_FALSE(fs::exists(new_));
  EXPECT_EQ(installation_.Ctl("convert").status, 2);
  EXPECT_EQ(installation_.Ctl("convert a.mdb").status, 2);
  EXPECT_EQ(Converts("--everything").status, 2);
  new_ = installation_.suite() / "no such folder" / "Neu.mdb";
  HasOldLog("log-1.1-jet3-cp1251.mdb");
  const Ended unwritable = Converts();
  EXPECT_EQ(unwritable.status, 1);
  EXPECT_THAT(unwritable.err, HasSubstr("could not be written"));
}

TEST_F(ConvertCommandTest, AnOldLogCanBeReadButNotChanged) {
  HasOldLog("log-1.0-jet3-cp1252.mdb");
  const std::string before = ReadFile(old_);
  EXPECT_EQ(OnOldLog("check").out, "ok\n");
  EXPECT_THAT(OnOldLog("list --display --from 1.1.1895 --to 31.12.1895").out, HasSubstr("1895"));
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  for (const std::string command : {"update --other-log", "compact", "repair"}) {
    SCOPED_TRACE(command);
    const Ended run = OnOldLog(command);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("varnlogctl convert"));
  }
  EXPECT_EQ(ReadFile(old_), before);
  EXPECT_TRUE(fs::exists(installation_.exchangeFile()));
  HasOldLog("log-1.1-jet4-scratch.mdb", 126976);
  EXPECT_EQ(OnOldLog("check").status, 1);
  EXPECT_EQ(OnOldLog("list").status, 1);
}

}  // namespace
}  // namespace varnlog::cli
