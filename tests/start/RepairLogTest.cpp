#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/LogCheck.h"
#include "core/LogConfig.h"
#include "start/RepairLog.h"
#include "start/StartUp.h"
#include "tests/start/AppFixture.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/Table.h"

namespace varnlog::start {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RepairLogTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_.InstallProgram();
    ASSERT_TRUE(OpenLogWorkspace(globals_));
  }
  ~RepairLogTest() override { globals_.LogEngineGl.reset(); }

  std::shared_ptr<dao::Database> Open() {
    engine_.SetSystemDB((folder_.Program() / "system.mdw").string());
    return engine_.CreateWorkspace("x", "Admin", "")->OpenDatabase(file_, false, false);
  }
  void MakeLog(int exposures, const std::string& then = "") {
    varnlog::test::CopyOver(folder_.Program() / "varnlog.md0", platform::ToPath(file_));
    const auto log = Open();
    for (int i = 0; i < exposures; ++i)
      log->Execute("INSERT INTO TXray (tXraySName, tXraySComment) VALUES ('P" + std::to_string(i) + "', '" +
                   std::string(200, 'x') + "')");
    if (!then.empty()) log->Execute(then);
    log->Close();
  }
  std::vector<std::string> Check() { return core::CheckLog(*Open()); }
  LogRepair Repair() { return RepairLog(*globals_.LogEngineGl, file_, globals_.AuthorGl, clock_); }

  test::SuiteFolder folder_;
  core::Globals globals_ = folder_.NewGlobals();
  std::string file_ = folder_.Data("Varnlog.mdb");
  dao::DBEngine engine_;
  platform::FixedClock clock_{*platform::DateTime::FromCivil(2024, 3, 1, 8)};
};

TEST_F(RepairLogTest, WhatALogLacksIsFoundAndPutBackWhereItCanBe) {
  MakeLog(3);
  EXPECT_THAT(Check(), IsEmpty());
  EXPECT_TRUE(Repair().IsWhole());
  const auto indexes = Open()->TableDefs("TXray").Indexes();
  for (const auto& [statement, finding, restored] : Table<const char*, const char*, std::vector<std::string>>{
           {"DROP INDEX iXRayTs", "iXRayTs", {"iXRayTs"}},
           {"DROP INDEX iXRayIdent; CREATE INDEX iXRayIdent ON TXray (tXraySName)",
            "iXRayIdent",
            {"iXRayIdent"}},
           {"DELETE FROM TConfig WHERE tCfgSKey = 'DBVersion'", "DBVersion", {"DBVersion"}},
           {"DROP TABLE TConfig", "TConfig", {"TConfig", "DBVersion"}},
           {"DROP TRIGGER rXrayChange; ALTER TABLE TXray DROP COLUMN tXraySRegio", "tXraySRegio", {}},
           {"DROP TABLE TXray", "TXray", {}}}) {
    MakeLog(3, statement);
    EXPECT_THAT(Check(), ElementsAre(HasSubstr(finding))) << statement;
    const LogRepair repair = Repair();
    EXPECT_EQ(repair.restored, restored) << statement;
    EXPECT_EQ(repair.IsWhole(), !restored.empty()) << statement;
    EXPECT_EQ(Check().empty(), !restored.empty()) << statement;
    if (restored.empty()) continue;
    EXPECT_EQ(core::ReadLogConfig(*Open(), core::kVersionKey), "1.1") << statement;
    const auto now = Open()->TableDefs("TXray").Indexes();
    for (const dao::Index& index : indexes)
      EXPECT_EQ(Open()->TableDefs("TXray").IndexNamed(index.name).fields, index.fields) << statement;
  }
}

TEST_F(RepairLogTest, MissingNumbersAreToldOnceAndNoted) {
  MakeLog(9, "DELETE FROM TXray WHERE tXrayCulIntIDPk IN (2, 4, 5, 9)");
  EXPECT_THAT(Check(), ElementsAre("4 exposures are missing, numbers 2, 4-5, 9"));
  const LogRepair repair = Repair();
  EXPECT_THAT(repair.missing, ElementsAre(dao::IdRange{2, 2}, dao::IdRange{4, 5}, dao::IdRange{9, 9}));
  EXPECT_EQ(repair.exposures, 5);
  EXPECT_FALSE(repair.IsWhole());
  EXPECT_THAT(RepairText(varnlog::test::FakeTexts(), repair), HasSubstr("PP_REPAIR_LOST"));
  EXPECT_TRUE(Repair().IsWhole());
  Open()->Execute("DELETE FROM TXray WHERE tXrayCulIntIDPk IN (6, 3)");
  EXPECT_THAT(Check(), ElementsAre("2 exposures are missing, numbers 3, 6"));
}

}  // namespace
}  // namespace varnlog::start
