#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "intake/CPAXTOTokens.h"
#include "tests/support/TestFolder.h"
#include "tools/exchange/ExposureGenerator.h"

namespace varnlog::tools {
namespace {

constexpr int kRecords = 20'000;

std::string Records(const GeneratorOptions& options, int page = 850) {
  const platform::CodePage oem(page);
  ExposureGenerator generator(options);
  std::string records;
  for (std::int64_t i = 0; i < options.count; ++i) AppendRecord(generator.Next(), oem, records);
  return records;
}

TEST(ExposureGenerator, TheSameSeedMakesTheSameRecords) {
  EXPECT_EQ(Records({.count = 500, .seed = 7}), Records({.count = 500, .seed = 7}));
  EXPECT_NE(Records({.count = 500, .seed = 7}), Records({.count = 500, .seed = 8}));
}

TEST(ExposureGenerator, NewExposuresAreNeverTakenAtTheSameTime) {
  for (const bool inTimeOrder : {true, false}) {
    ExposureGenerator generator({.count = kRecords,
                                 .inTimeOrder = inTimeOrder,
                                 .informationPercent = 0,
                                 .repeatedPercent = 0,
                                 .invalidPercent = 0});
    std::set<std::pair<std::string, std::string>> times;
    for (int i = 0; i < kRecords; ++i) {
      const Exposure& exposure = generator.Next();
      EXPECT_TRUE(times.emplace(exposure.takeDate, exposure.takeTime).second) << i;
    }
  }
}

TEST(ExchangeRecord, IsReadBackAsItWasWritten) {
  const varnlog::test::TestFolder folder;
  const auto file = folder / "écriture.sdx";
  for (const std::string language : {"D", "CYR"}) {
    const GeneratorOptions options{.count = 2'000, .language = language};
    const int page = language == "CYR" ? 866 : 850;
    std::ofstream(file, std::ios::binary) << Records(options, page);

    intake::CPAXTOTokens reader{platform::CodePage(page)};
    ASSERT_TRUE(reader.OpenMailslot(file.string()));
    ASSERT_EQ(reader.ReadMailslot(options.count + 1),
              static_cast<std::int64_t>(std::filesystem::file_size(file)));
    ASSERT_EQ(reader.Count(), options.count);
    ExposureGenerator generator(options);
    intake::CToken token;
    for (std::int64_t i = 0; i < options.count; ++i) {
      ASSERT_TRUE(reader.Item(i, token));
      const Exposure& written = generator.Next();
      EXPECT_EQ(token.Kind(), std::string(1, static_cast<char>(written.kind))) << i;
      EXPECT_EQ(token.LastName(), written.lastName) << i;
      EXPECT_EQ(token.FirstName(), written.firstName) << i;
      EXPECT_EQ(token.TypeCode(), written.typeCode) << i;
      EXPECT_EQ(token.TypeExtra(), written.typeExtra) << i;
      EXPECT_EQ(token.TakeTime(), written.takeTime) << i;
      EXPECT_EQ(token.Responsible(), written.responsible) << i;
      EXPECT_EQ(token.Dose(), written.dose) << i;
    }
    reader.CloseMailslot();
  }
}

}  // namespace
}  // namespace varnlog::tools
