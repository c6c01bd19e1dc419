#include <filesystem>

#include <gtest/gtest.h>

#include "core/Installation.h"
#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "platform/Files.h"
#include "tests/support/Environment.h"
#include "tests/support/LogFolder.h"

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

class EmptyLog : public testing::Test, protected test::LogFolder {
 protected:
  std::shared_ptr<dao::Database> log_ = Make("log.mdb", "log.sql");
};

TEST_F(EmptyLog, HasTheLayoutThatTheProgramKnows) {
  ASSERT_TRUE(IsLog(*log_));
  EXPECT_EQ(Described(log_->TableDefs(kExposureTable).Fields()), Described(ExposureFields()));
  EXPECT_EQ(Described(log_->TableDefs(kConfigTable).Fields()), Described(ConfigFields()));
  EXPECT_EQ(ReadLogConfig(*log_, kVersionKey), kLogVersion);
  EXPECT_EQ(ReadLogConfig(*log_, kReadOnlyKey), "0");
}

TEST_F(EmptyLog, ProgramFolderIsGivenElseNamedElseTheExecutables) {
  Globals globals;
  SetProgramFolder(globals, "");
  EXPECT_EQ(globals.ProgramFolderGl, platform::FromPath(platform::ExecutableFolder()));
  test::SetVariable("VARNLOG_FOLDER", platform::FromPath(folder_.Path()));
  SetProgramFolder(globals, "");
  EXPECT_EQ(globals.ProgramFolderGl, folder_.Path().string());
  EXPECT_EQ(globals.IniFileGl, (folder_ / "varnlog.ini").string());
  SetProgramFolder(globals, "anderswo");
  EXPECT_EQ(globals.ProgramFolderGl, (fs::current_path() / "anderswo").string());
  test::SetVariable("VARNLOG_FOLDER", "");
}

TEST_F(EmptyLog, WhatIsDeliveredLiesInTheProgramFolderElseBesideTheExecutable) {
  Globals globals;
  globals.ProgramFolderGl = folder_.Path().string();
  EXPECT_EQ(DeliveredFile(globals, "log.mdb"), (folder_ / "log.mdb").string());
  const fs::path beside = *fs::directory_iterator(platform::ExecutableFolder());
  EXPECT_EQ(DeliveredFile(globals, platform::FromPath(beside.filename())), platform::FromPath(beside));
  EXPECT_EQ(DeliveredFile(globals, "fehlt.mdb"), (folder_ / "fehlt.mdb").string());
}

}  // namespace
}  // namespace varnlog::core
