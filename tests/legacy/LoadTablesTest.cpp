#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/LoadTables.h"
#include "tests/legacy/ConversionFixture.h"

namespace varnlog::legacy {
namespace {

using LoadTablesTest = ConversionFixture;

TEST_F(LoadTablesTest, AnOldLogBehavesLikeAnyOther) {
  for (const std::string name : {"log-1.1-jet3-cp1251", "log-1.1-jet4-password-encoded"}) {
    SCOPED_TRACE(name);
    const auto file = folder_ / (name + ".loaded");
    const auto target = engine_.CreateDatabase(file.string(), "", 0);
    LoadTables(samples::Folder() / (name + ".mdb"), *target);
    target->Close();
    EXPECT_EQ(NewRows(file), ExpectedRows(name));
    EXPECT_EQ(Setting(file, "DBVersion"), "1.1");
    EXPECT_TRUE(Open(file)->TableDefs("txray").FieldNamed("tXrayCulIntIDPk").isCounter);
    EXPECT_EQ(Open(file)->TableDefs("txray").FieldNamed("tXraySDr").size, 12);
  }
}

TEST_F(LoadTablesTest, ADamagedFileIsRefusedWithTheNumberThatSaysSo) {
  HasOldLog(samples::ReadOurs("log-1.1-jet4-scratch.mdb").substr(0, 126976));
  const auto damaged = engine_.CreateDatabase((folder_ / "a").string(), "", 0);
  try {
    LoadTables(log_(), *damaged);
    FAIL() << "a damaged file was loaded";
  } catch (const dao::EngineError& error) {
    EXPECT_EQ(error.number(), dao::ErrorNumber::kDamaged);
  }
  HasSample("broken-text-renamed.mdb");
  try {
    LoadTables(log_(), *damaged);
    FAIL() << "a text was loaded";
  } catch (const dao::EngineError& error) {
    EXPECT_EQ(error.number(), dao::ErrorNumber::kUnrecognisedFormat);
  }
}

}  // namespace
}  // namespace varnlog::legacy
