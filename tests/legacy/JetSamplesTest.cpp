#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/JetDatabase.h"
#include "tests/legacy/Samples.h"

namespace varnlog::legacy {
namespace {

namespace fs = std::filesystem;

// Databases that have an expectation beside them: NAME.mdb with NAME.expected.tsv, both possibly packed.
std::vector<fs::path> WithExpectation(const fs::path& folder) {
  std::vector<fs::path> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().string();
    if (name.find(".expected.tsv") != std::string::npos) found.push_back(entry.path());
  }
  return found;
}

fs::path DatabaseOf(const fs::path& expectation) {
  std::string name = expectation.string();
  const std::string ending = ".expected.tsv";
  return name.replace(name.find(ending), ending.size(), ".mdb");
}

void ExpectReadsAs(const fs::path& expectation) {
  SCOPED_TRACE(expectation.filename().string());
  const std::string content = samples::Read(DatabaseOf(expectation));
  const auto database = JetDatabase::Open(samples::AsBytes(content));
  ASSERT_TRUE(database) << Describe(database.Why());
  EXPECT_TRUE(database->Faults().IsEmpty());
  FaultList faults;
  const auto lines = samples::RenderTables(*database, faults);
  for (const Fault& fault : faults.First()) ADD_FAILURE() << Describe(fault);
  const auto expected = samples::Expected(samples::Read(expectation));
  ASSERT_EQ(lines.size(), expected.size());
  for (std::size_t i = 0; i < lines.size(); ++i) ASSERT_EQ(lines[i], expected[i]);
}

TEST(JetSamples, ReadValueByValueAsExpected) {
  const auto expectations = WithExpectation(samples::Folder());
  ASSERT_GE(expectations.size(), 11U);
  for (const fs::path& expectation : expectations) ExpectReadsAs(expectation);
}

// More samples than a checkout carries, in any depth below one folder.
TEST(JetSamples, ReadAsExpectedInAFolderGivenFromOutside) {
  const char* folder = std::getenv("VARNLOG_JET_SAMPLES");
  if (folder == nullptr) GTEST_SKIP() << "VARNLOG_JET_SAMPLES names no folder";
  const auto expectations = WithExpectation(folder);
  ASSERT_FALSE(expectations.empty());
  for (const fs::path& expectation : expectations) ExpectReadsAs(expectation);
}

TEST(JetSamples, TellVersionCodePagePasswordAndEncoding) {
  struct Row {
    const char* name;
    JetVersion version;
    int codePage;
    bool hasPassword;
    bool isEncoded;
  };
  const Row rows[] = {
      {"log-1.0-jet3-cp1252.mdb", JetVersion::kJet3, 1252, false, false},
      {"log-1.1-jet3-cp1250.mdb", JetVersion::kJet3, 1250, false, false},
      {"log-1.1-jet3-cp1251.mdb", JetVersion::kJet3, 1251, false, false},
      {"log-1.1-jet3-password-encoded.mdb", JetVersion::kJet3, 1252, true, true},
      {"log-1.1-jet4-scratch.mdb", JetVersion::kJet4, 1252, false, false},
      {"log-1.1-jet4-password.mdb", JetVersion::kJet4, 1252, true, false},
      {"log-1.1-jet4-password-encoded.mdb", JetVersion::kJet4, 1252, true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto header = ReadHeader(samples::AsBytes(samples::ReadOurs(row.name)));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->version, row.version);
    EXPECT_EQ(header->codePage, row.codePage);
    EXPECT_EQ(header->hasPassword, row.hasPassword);
    EXPECT_EQ(header->IsEncoded(), row.isEncoded);
  }
}

TEST(JetSamples, TellTypesSizesAndTheCounterOfALog) {
  for (const char* name : {"log-1.1-jet3-cp1252.mdb", "log-1.1-jet4-scratch.mdb"}) {
    SCOPED_TRACE(name);
    const std::string content = samples::ReadOurs(name);
    const auto database = JetDatabase::Open(samples::AsBytes(content));
    ASSERT_TRUE(database);
    const auto table = database->Table("txray");
    ASSERT_TRUE(table);
    EXPECT_TRUE(table->Column("tXrayCulIntIDPk")->isCounter);
    EXPECT_EQ(table->Column("TXRAYSNAME")->size, 32);
    EXPECT_EQ(table->Column("tXraySComment")->size, 255);
    EXPECT_EQ(table->Column("tXrayTs")->type, ColumnType::kDate);
    EXPECT_EQ(table->Column("tXrayBEdDr")->type, ColumnType::kBoolean);
    EXPECT_EQ(table->Column("tXrayBEd"), nullptr);
  }
}

}  // namespace
}  // namespace varnlog::legacy
