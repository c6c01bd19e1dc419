#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/JetDatabase.h"
#include "legacy/LogExamination.h"
#include "platform/Files.h"
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
  std::string name = platform::FromPath(expectation);
  const std::string ending = ".expected.tsv";
  return platform::ToPath(name.replace(name.find(ending), ending.size(), ".mdb"));
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

// Databases without an expectation whose names say that they are broken or another program's.
std::vector<fs::path> ToBeRefused(const fs::path& folder) {
  std::vector<fs::path> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    const bool isBad = name.starts_with("broken-") || name.starts_with("foreign-");
    const fs::path expectation = fs::path(entry.path()).replace_extension(".expected.tsv");
    if (isBad && entry.path().extension() == ".mdb" && !fs::exists(expectation))
      found.push_back(entry.path());
  }
  return found;
}

void Print(const char* verdict, const fs::path& sample, const std::string& more = {}) {
  std::printf("%-9s %s%s\n", verdict, platform::FromPath(sample.filename()).c_str(), more.c_str());
}

std::string WhatIsWrong(const LogExamination& found) {
  const std::string rows =
      std::to_string(found.exposures.read) + " of " + std::to_string(found.exposures.declared) + " exposures";
  return ": " + rows +
         (found.faults.IsEmpty() ? std::string() : ", " + Describe(found.faults.First().front()));
}

// More samples than a checkout carries, in any depth below one folder; tools/scripts/samples prints them.
TEST(JetSamples, ReadAsExpectedInAFolderGivenFromOutside) {
  const char* folder = std::getenv("VARNLOG_JET_SAMPLES");
  if (folder == nullptr) GTEST_SKIP() << "VARNLOG_JET_SAMPLES names no folder";
  const auto expectations = WithExpectation(folder);
  ASSERT_FALSE(expectations.empty());
  for (const fs::path& expectation : expectations) {
    const auto* result = testing::UnitTest::GetInstance()->current_test_info()->result();
    const int before = result->total_part_count();
    ExpectReadsAs(expectation);
    Print(result->total_part_count() == before ? "equal" : "different", DatabaseOf(expectation));
  }
  for (const fs::path& sample : ToBeRefused(folder)) {
    const std::string content = samples::Read(sample);
    const LogExamination found = Examine(samples::AsBytes(content));
    const bool isRefused = found.verdict != LogExamination::Verdict::kSound;
    EXPECT_TRUE(isRefused) << sample;
    Print(isRefused ? "refused" : "accepted", sample, WhatIsWrong(found));
  }
}

}  // namespace
}  // namespace varnlog::legacy
