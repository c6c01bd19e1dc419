#include <fstream>
#include <regex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/Installation.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class MaintenanceCommandsTest : public testing::Test {
 protected:
  MaintenanceCommandsTest() {
    std::vector<tools::Exposure> exposures;
    for (int i = 0; i < 500; ++i) {
      const std::string time = "0" + std::to_string(i / 60) + ":" + std::to_string(10 + i % 50) + ":00";
      exposures.push_back(NewExposure("Müller " + std::to_string(i), "XI", "01.03.2004", time));
    }
    installation_.Reports(exposures);
    EXPECT_EQ(installation_.Ctl("update").status, 0);
  }

  /// What the log holds, and the state of its seals.
  std::string Content() {
    return installation_.Ctl("list --format csv").out + installation_.Ctl("history --format csv").out +
           installation_.Ctl("verify").out;
  }

  // The page with the row of a patient; in an index a name stands behind the digits of a time.
  void DamagePageOf(const std::string& name) {
    constexpr std::size_t kPage = 16384;
    std::fstream file(installation_.log(), std::ios::in | std::ios::out | std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    std::size_t at = content.find(name);
    while (at != std::string::npos && content[at - 1] >= '0' && content[at - 1] <= '9')
      at = content.find(name, at + 1);
    ASSERT_NE(at, std::string::npos);
    file.seekp(static_cast<std::streamoff>(at / kPage * kPage));
    file << std::string(kPage, '\x55');
  }

  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(MaintenanceCommandsTest, ASoundLogStaysAsItIs) {
  const std::string before = Content();
  EXPECT_EQ(installation_.Ctl("check").out, "ok\n");
  EXPECT_EQ(installation_.Ctl("repair").out, "ok\n");
  const std::string compacted = installation_.Ctl("compact").out;
  EXPECT_TRUE(std::regex_match(compacted, std::regex("before [0-9]+, after [0-9]+\n"))) << compacted;
  EXPECT_EQ(Content(), before);
}

TEST_F(MaintenanceCommandsTest, ADamagedPageIsFoundAndWhatItCostIsSaid) {
  DamagePageOf("Müller 250");
  const Ended check = installation_.Ctl("check");
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.out + check.err, "");
  EXPECT_THAT(check.out, testing::Not(HasSubstr("ok\n")));
  const Ended repair = installation_.Ctl("repair");
  EXPECT_EQ(repair.status, 1);
  EXPECT_TRUE(std::regex_search(repair.out,
                                std::regex("damaged: .+\n(.+\n)*read: [0-9]+ exposures\nmissing: [0-9]+ "
                                           "exposures, numbers .*[0-9]+-[0-9]+\ndamaged file: .+damaged\n")))
      << repair.out;
  EXPECT_THAT(repair.err, HasSubstr("Es fehlen Aufnahmen!"));
  // The missing numbers are noted, and who repaired the log when.
  for (const char* command : {"check", "verify"}) {
    const Ended again = installation_.Ctl(command);
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_THAT(again.out, HasSubstr("Bei der Reparatur fehlten die Aufnahmen"));
  }
  EXPECT_EQ(installation_.Ctl("repair").out, "ok\n");
}

TEST_F(MaintenanceCommandsTest, ALogWithoutItsVersionIsNotOk) {
  installation_.WithLog(false, [](dao::Database& log) {
    log.Execute("DELETE FROM TConfig WHERE tCfgSKey = 'DBVersion'; DROP INDEX iXRayTs");
  });
  const Ended check = installation_.Ctl("check");
  EXPECT_EQ(check.status, 1);
  EXPECT_THAT(check.out, testing::AllOf(HasSubstr("DBVersion"), HasSubstr("iXRayTs")));
  EXPECT_EQ(installation_.Ctl("repair").out, "restored: DBVersion\nrestored: iXRayTs\nok\n");
  EXPECT_EQ(installation_.Ctl("check").out, "ok\n");
}

TEST_F(MaintenanceCommandsTest, AnEngineErrorIsToldInTheUsersLanguage) {
  installation_.Reports({NewExposure("Neu", "XI", "01.03.2004", "20:00:00")});
  installation_.WithLog(false, [this](dao::Database& log) {
    const dao::ChangeGroup writes = log.BeginChanges();
    for (const auto& [language, text] : {std::pair{"D", "3045: Die Datei wird gerade von einem anderen"},
                                         {"GB", "3045: The file is in use by another workstation"}}) {
      installation_.SetLanguage(language);
      for (const char* command : {"update", "compact", "repair"}) {
        const Ended run = installation_.Ctl(command);
        EXPECT_EQ(run.status, 1) << command;
        EXPECT_THAT(run.err, HasSubstr(text)) << command;
      }
    }
  });
}

TEST_F(MaintenanceCommandsTest, FilesThatAreNoLogAreRefusedByEveryCommand) {
  const fs::path folder = installation_.suite() / "Data";
  Installation::Write(folder / "text.mdb", "This is a letter to the dentist.\n" + std::string(5000, 'x'));
  Installation::Write(folder / "empty.mdb", "");
  fs::create_directory(folder / "folder.mdb");
  fs::copy_file(installation_.program() / "verbalo.mdb", folder / "other.mdb");
  for (const std::string name : {"text.mdb", "empty.mdb", "folder.mdb", "other.mdb", "missing.mdb"}) {
    for (const std::string command : {"list", "update", "check", "compact"}) {
      const Ended run =
          installation_.Ctl(command + " --file '" + (folder / platform::ToPath(name)).string() + "'");
      EXPECT_EQ(run.status, 1) << command << " " << name << run.out;
      EXPECT_EQ(run.out, "") << command << " " << name;
      EXPECT_NE(run.err, "") << command << " " << name;
    }
  }
  EXPECT_FALSE(fs::exists(folder / "missing.mdb"));
  EXPECT_EQ(fs::file_size(folder / "text.mdb"), 5033U);
  EXPECT_EQ(fs::file_size(folder / "empty.mdb"), 0U);
}

}  // namespace
}  // namespace varnlog::cli
