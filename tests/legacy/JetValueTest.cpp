#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "legacy/JetText.h"
#include "legacy/JetValue.h"
#include "legacy/Rc4.h"
#include "tests/legacy/Samples.h"
#include "tests/support/Table.h"

namespace varnlog::legacy {
namespace {

using namespace std::string_literals;

TEST(JetDate, CountsDaysFromTheEndOf1899AndTimesForwardsOnBothSides) {
  const Table<double, const char*> rows = {{0.0, "1899-12-30 00:00:00"},
                                           {1.0, "1899-12-31 00:00:00"},
                                           {-1.0, "1899-12-29 00:00:00"},
                                           {-1.25, "1899-12-29 06:00:00"},
                                           {0.25, "1899-12-30 06:00:00"},
                                           {-7303.0, "1880-01-01 00:00:00"},
                                           {36525.999988425923, "1999-12-31 23:59:59"},
                                           {36525.9999999, "2000-01-01 00:00:00"},
                                           {-1.9999999, "1899-12-30 00:00:00"},
                                           {-657434.0, "0100-01-01 00:00:00"},
                                           {2958465.5, "9999-12-31 12:00:00"}};
  for (const auto& [days, iso] : rows) {
    const auto date = DateFromDays(days);
    ASSERT_TRUE(date) << days;
    EXPECT_EQ(date->ToIso(), iso) << days;
  }
}

TEST(JetDate, RefusesWhatIsNoDate) {
  using Limits = std::numeric_limits<double>;
  for (const double days : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e300, -1e300,
                            2958466.0, 2958465.9999999, -657435.0, -657435.5}) {
    EXPECT_FALSE(DateFromDays(days)) << days;
  }
}

TEST(JetMoney, KeepsEveryDigit) {
  EXPECT_EQ(MoneyText(0), "0.0000");
  EXPECT_EQ(MoneyText(35000), "3.5000");
  EXPECT_EQ(MoneyText(-1), "-0.0001");
  EXPECT_EQ(MoneyText(std::numeric_limits<std::int64_t>::min()), "-922337203685477.5808");
}

TEST(JetText, UnpacksCompressedTextWhoseSegmentsMix) {
  const Table<std::string, std::string> rows = {{"", ""},
                                                {"a\0b\0"s, "ab"},
                                                {"\x3d\xd8\0\xde"s, "\U0001F600"},
                                                {"\xff\xfeGr\xf6\xdf"s + "e"s, "Größe"},
                                                {"\xff\xfe"s, ""},
                                                {"\xff\xfe\0\x36\x04\0x"s, "жx"},
                                                {"\xff\xfe"s + "a\0\x36\x04\xe4\0\x36\x04\0b"s, "aжäжb"},
                                                {"\xff\xfe\0\x3d\xd8\x01\xde"s, "\U0001F601"},
                                                {"\x3d\xd8"s, "\uFFFD"},
                                                {"\0\xde\x3d\xd8"s + "x\0"s, "\uFFFD\uFFFDx"},
                                                {"a\0b"s, "a"},
                                                {"\xff\xfe\0\x36"s, ""}};
  for (const auto& [stored, expected] : rows) {
    std::string text;
    AppendJet4Text(samples::AsBytes(stored), text);
    EXPECT_EQ(text, expected) << testing::PrintToString(stored);
  }
}

TEST(JetText, TakesTheColumnsCodePageBeforeTheFiles) {
  JetHeader header;
  header.version = JetVersion::kJet3;
  header.codePage = 1251;
  const JetText text(header);
  const std::string stored = "\xe6\x81";
  EXPECT_EQ(text.Decode(samples::AsBytes(stored)), "жЃ");
  EXPECT_EQ(text.Decode(samples::AsBytes(stored), 1252), "æ\u0081");
  EXPECT_EQ(text.Decode(samples::AsBytes(stored), 64999), "жЃ");
}

TEST(Rc4, GivesThePublishedCipherText) {
  const std::string plain = "pedia";
  std::string cipher(plain.size(), '\0');
  Rc4(0x696b6957)
      .Apply(samples::AsBytes(plain), std::as_writable_bytes(std::span(cipher.data(), cipher.size())));
  EXPECT_EQ(cipher, "\x10\x21\xbf\x04\x20");
}

}  // namespace
}  // namespace varnlog::legacy
