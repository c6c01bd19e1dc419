#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class UpdateCommandTest : public testing::Test {
 protected:
  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(UpdateCommandTest, TakesExposuresOnceAndRemovesTheExchangeFile) {
  const auto exposure = NewExposure("D'Angelo", "XI", "01.03.2004", "08:00:01");
  installation_.Reports({exposure});
  EXPECT_EQ(installation_.Ctl("update").out, "read 1, added 1, changed 0, skipped 0\n");
  EXPECT_FALSE(fs::exists(installation_.exchangeFile()));
  EXPECT_EQ(installation_.Ctl("update").out, "read 0, added 0, changed 0, skipped 0\n");

  auto information = exposure;
  information.kind = tools::Exposure::Kind::kInformation;
  information.typeExtra = "~~";
  installation_.Reports({exposure, information});
  EXPECT_EQ(installation_.Ctl("update").out, "read 2, added 0, changed 1, skipped 1\n");
  EXPECT_THAT(installation_.Ctl("list --format csv").out, HasSubstr(",N.d.,"));
}

TEST_F(UpdateCommandTest, WithoutAnExchangeFileThereIsNothingToDo) {
  EXPECT_EQ(installation_.Ctl("list").status, 1);
  EXPECT_FALSE(fs::exists(installation_.log())) << "who only looks makes no log";
  const Ended run = installation_.Ctl("update");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "read 0, added 0, changed 0, skipped 0\n");
  EXPECT_TRUE(fs::exists(installation_.log())) << "the empty log is installed";
  EXPECT_THAT(run.err, HasSubstr(installation_.log().filename().string())) << "and that is said";
  EXPECT_EQ(installation_.Ctl("update").err, "");
}

TEST_F(UpdateCommandTest, ALogThatTheSettingsNameIsNeverReplacedByAnEmptyOne) {
  const fs::path named = installation_.suite() / "Server" / "Praxis.mdb";
  Installation::Write(installation_.program() / "varnlog.ini",
                      "[User]\r\nDataFile=" + named.string() + "\r\n");
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  for (const std::string command : {"update", "list", "report --output x.pdf", "check"}) {
    const Ended run = installation_.Ctl(command);
    EXPECT_EQ(run.status, 1) << command;
    EXPECT_THAT(run.err, testing::AllOf(HasSubstr("varnlog.ini"), HasSubstr("Praxis.mdb"))) << command;
  }
  fs::create_directory(named.parent_path());
  EXPECT_EQ(installation_.Ctl("update").status, 1);
  EXPECT_FALSE(fs::exists(named) || fs::exists(installation_.log()));
  fs::copy_file(installation_.program() / "varnlog.md0", named);
  EXPECT_EQ(installation_.Ctl("update").out, "read 1, added 1, changed 0, skipped 0\n");
}

TEST_F(UpdateCommandTest, TakesExposuresIntoAnotherLogOnlyWhenTold) {
  const fs::path other = installation_.suite() / "Archiv.mdb";
  fs::copy_file(installation_.program() / "varnlog.md0", other);
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  const std::string command = "update --file '" + other.string() + "'";
  const Ended refused = installation_.Ctl(command);
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, testing::AllOf(HasSubstr("Archiv.mdb"), HasSubstr("--other-log")));
  EXPECT_TRUE(fs::exists(installation_.exchangeFile()));
  EXPECT_EQ(installation_.Ctl(command + " --other-log").out, "read 1, added 1, changed 0, skipped 0\n");
  EXPECT_FALSE(fs::exists(installation_.log()));
  fs::rename(other, installation_.log());
  EXPECT_EQ(installation_.Ctl("update --file '" + installation_.log().string() + "'").status, 0)
      << "the practice's own log under its name";
}

TEST_F(UpdateCommandTest, AnInvalidBirthDateIsReportedOnceForEachPatient) {
  std::vector<tools::Exposure> exposures;
  for (const std::string name : {"Müller", "Maier", "Müller", "Müller"}) {
    exposures.push_back(NewExposure(name, "XI", "01.03.2004", "08:00:0" + std::to_string(exposures.size())));
    exposures.back().birthday = "31.13.1999";
  }
  installation_.Reports(exposures);
  installation_.SetLanguage("GB");
  const Ended run = installation_.Ctl("update");
  EXPECT_EQ(run.out, "read 4, added 4, changed 0, skipped 0\n");
  const auto first = run.err.find("Müller");
  ASSERT_NE(first, std::string::npos) << run.err;
  EXPECT_EQ(run.err.find("Müller", first + 1), std::string::npos) << run.err;
  EXPECT_THAT(run.err, HasSubstr("(3x)\n"));
  EXPECT_THAT(run.err, HasSubstr("Maier"));
}

TEST_F(UpdateCommandTest, AReadOnlyLogIsNotUpdated) {
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  installation_.DamagesLog("UPDATE TConfig SET tCfgSSet = '1' WHERE tCfgSKey = 'ReadOnly'");
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  const Ended run = installation_.Ctl("update");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("schreibgeschützt"));
  EXPECT_TRUE(fs::exists(installation_.exchangeFile()));
}

TEST_F(UpdateCommandTest, WithoutTheSuitesLibraryNothingIsTouched) {
  fs::remove(installation_.suite() / "KVFILEDB.DLL");
  const Ended run = installation_.Ctl("update");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("Kalvero"));
  EXPECT_FALSE(fs::exists(installation_.log()));
}

TEST_F(UpdateCommandTest, WhatTheProgramFolderLacksIsTakenFromBesideTheExecutable) {
  fs::remove(installation_.program() / "verbalo.mdb");
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  const Ended gone = installation_.Shell("'" VARNLOG_PROGRAM_DIR "/varnlogctl' --folder 'no such' check");
  EXPECT_EQ(gone.status, 1);
  EXPECT_THAT(gone.err, HasSubstr("no such"));
}

TEST_F(UpdateCommandTest, TheProgramFolderWorksWhereverItIsCopiedTo) {
  const fs::path copy = installation_.suite() / platform::ToPath("Kopie mit Ümlaut");
  fs::copy(VARNLOG_PROGRAM_DIR, copy, fs::copy_options::recursive);
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  const std::string command = "'" + (copy / "varnlogctl").string() + "' update";
  const fs::path before = fs::current_path();
  fs::current_path(before.root_path());
  const Ended run = installation_.Shell(command);
  fs::current_path(before);
  EXPECT_EQ(run.out, "read 1, added 1, changed 0, skipped 0\n") << run.err;
  fs::remove(copy / "verbalo.mdb");
  EXPECT_THAT(installation_.Shell(command).err, HasSubstr("Couldn't access language ressources"));
}

TEST_F(UpdateCommandTest, AClockBehindTheLogNeedsAnOption) {
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  installation_.DamagesLog("UPDATE TXray SET tXrayTs = '2199-12-31 00:00:00'");
  installation_.Reports({NewExposure("Müller", "XI", "01.03.2004", "09:00:01")});
  const Ended run = installation_.Ctl("update");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("--despite-clock"));
  EXPECT_TRUE(fs::exists(installation_.exchangeFile()));
  EXPECT_EQ(installation_.Ctl("update --despite-clock").out, "read 1, added 1, changed 0, skipped 0\n");
}

}  // namespace
}  // namespace varnlog::cli
