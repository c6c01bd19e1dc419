#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "core/Installation.h"
#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "platform/Files.h"
#include "tests/Paths.h"

namespace varnlog::core {
namespace {

namespace fs = std::filesystem;

std::string Described(std::string_view name, dao::FieldType type, int size) {
  return std::string(name) + " " + std::to_string(static_cast<int>(type)) + " " + std::to_string(size);
}

std::vector<std::string> Described(const std::vector<dao::FieldDef>& fields) {
  std::vector<std::string> lines;
  for (const auto& field : fields) lines.push_back(Described(field.name, field.type, field.size));
  return lines;
}

std::vector<std::string> Described(std::span<const LogField> fields) {
  std::vector<std::string> lines;
  for (const auto& field : fields) lines.push_back(Described(field.name, field.type, field.size));
  return lines;
}

class EmptyLog : public testing::Test {
 protected:
  EmptyLog() {
    std::string pattern = (fs::temp_directory_path() / "Leeres Buch für XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    std::ostringstream schema;
    schema << std::ifstream(fs::path(VARNLOG_SOURCE_DIR) / "resources" / "log.sql").rdbuf();
    log_ = engine_.CreateDatabase((folder_ / "log.mdb").string(), "", 0);
    log_->Execute(schema.str());
  }
  ~EmptyLog() override {
    log_.reset();
    fs::remove_all(folder_);
  }

  fs::path folder_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Database> log_;
};

TEST_F(EmptyLog, HasTheLayoutThatTheProgramKnows) {
  ASSERT_TRUE(IsLog(*log_));
  EXPECT_EQ(Described(log_->TableDefs(kExposureTable).Fields()), Described(ExposureFields()));
  EXPECT_EQ(Described(log_->TableDefs(kConfigTable).Fields()), Described(ConfigFields()));
  EXPECT_EQ(ReadLogConfig(*log_, kVersionKey), kLogVersion);
  EXPECT_EQ(ReadLogConfig(*log_, kReadOnlyKey), "0");
}

TEST_F(EmptyLog, KeepsSettingsOfItsOwn) {
  EXPECT_FALSE(ChangeLogConfig(*log_, "IntakeRun", "7"));
  EXPECT_EQ(ReadLogConfig(*log_, "IntakeRun"), std::nullopt);
  WriteLogConfig(*log_, "IntakeRun", "7");
  WriteLogConfig(*log_, "IntakeRun", "8");
  EXPECT_EQ(ReadLogConfig(*log_, "IntakeRun"), "8");
  EXPECT_EQ(log_->OpenRecordset("TConfig")->RecordCount(), 3);
}

TEST_F(EmptyLog, ProgramFolderIsGivenElseNamedElseTheExecutables) {
  Globals globals;
  SetProgramFolder(globals, "");
  EXPECT_EQ(globals.ProgramFolderGl, platform::FromPath(platform::ExecutableFolder()));
  ::setenv("VARNLOG_FOLDER", folder_.c_str(), 1);
  SetProgramFolder(globals, "");
  EXPECT_EQ(globals.ProgramFolderGl, folder_.string());
  EXPECT_EQ(globals.IniFileGl, (folder_ / "varnlog.ini").string());
  SetProgramFolder(globals, "anderswo");
  EXPECT_EQ(globals.ProgramFolderGl, (fs::current_path() / "anderswo").string());
  ::unsetenv("VARNLOG_FOLDER");
}

TEST_F(EmptyLog, WhatIsDeliveredLiesInTheProgramFolderElseBesideTheExecutable) {
  Globals globals;
  globals.ProgramFolderGl = folder_.string();
  EXPECT_EQ(DeliveredFile(globals, "log.mdb"), (folder_ / "log.mdb").string());
  EXPECT_EQ(DeliveredFile(globals, "test_core"),
            platform::FromPath(platform::ExecutableFolder() / "test_core"));
  EXPECT_EQ(DeliveredFile(globals, "fehlt.mdb"), (folder_ / "fehlt.mdb").string());
}

}  // namespace
}  // namespace varnlog::core
