#include <random>

#include <gtest/gtest.h>

#include "intake/CPAXTOTokens.h"
#include "tests/intake/ExchangeRecords.h"
#include "tests/support/Table.h"
#include "tests/support/TestFolder.h"

namespace varnlog::intake {
namespace {

using test::Exposure;
using test::Length;
using test::Record;
using test::WriteFile;

constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

class ReaderTest : public testing::Test {
 protected:
  /// What ReadMailslot returns for a file of these bytes; the reader stays open.
  std::int64_t Reads(const std::string& bytes, std::int64_t maximum = kAll) {
    WriteFile(file_, bytes);
    reader_.Clear();
    if (!reader_.OpenMailslot(file_.string())) return -1;
    return reader_.ReadMailslot(maximum);
  }
  CToken Token(std::int64_t index) {
    CToken token;
    EXPECT_TRUE(reader_.Item(index, token)) << "record " << index;
    return token;
  }

  test::TestFolder folder_;
  std::filesystem::path file_ = folder_ / "varnlog.sdx";
  CPAXTOTokens reader_{platform::CodePage(850)};
};

TEST_F(ReaderTest, FillsEveryPropertyOfANewExposure) {
  const std::string record =
      Record('T', {"p1",  "p2",  "p3",  "p4",  "p5",  "p6",  "p7",  "p8",  "p10p9", "p11",
                   "p12", "p13", "p14", "p15", "p16", "p17", "p18", "p19", "p20",   "p21"});
  EXPECT_EQ(Reads(record), static_cast<std::int64_t>(record.size()));
  ASSERT_EQ(reader_.Count(), 1);
  const CToken token = Token(0);
  EXPECT_EQ(token.Kind(), "T");
  for (std::size_t i = 1; i < CToken::kPropertyCount; ++i) {
    std::string expected = "p" + std::to_string(i);
    if (i == CToken::kTypeCode) expected = "p9";
    if (i == CToken::kTypeExtra) expected = "p1";
    EXPECT_EQ(token.Get(static_cast<CToken::Property>(i)), expected) << "property " << i;
  }
}

TEST_F(ReaderTest, LeavesEmptyWhatAnInformationRecordDoesNotHave) {
  const std::string first = Exposure{.pregnancy = "N"}.New();
  const std::string second = Record('I', {"p2", "p3", "p4", "p5", "p6", "21XS", "p11", "p12", "p13", "p14"});
  EXPECT_GT(Reads(first + second), 0);
  CToken token = Token(0);
  ASSERT_TRUE(reader_.Item(1, token));  // into the same memory
  const std::vector<std::string> expected = {"I",   "",    "p2",  "p3",  "p4", "p5", "p6", "", "", "XS", "21",
                                             "p11", "p12", "p13", "p14", "",   "",   "",   "", "", "",   ""};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(token.Get(static_cast<CToken::Property>(i)), expected[i]) << "property " << i;
  }
}

TEST_F(ReaderTest, SplitsTheTypeString) {
  const Table<const char*, const char*, const char*> rows = {
      {"11XI", "XI", "11"},  {"  XP", "XP", ""},        {" 8XI", "XI", "8"}, {"~~XV", "XV", "~~"},
      {"XC", "XC", "XC"},    {"X", "X", "X"},           {"", "", ""},        {"11XI  ", "XI", "11"},
      {"P12XS", "XS", "P1"}, {"\x84\x94XI", "XI", "äö"}};
  for (const auto& [text, code, extra] : rows) {
    ASSERT_GT(Reads(Exposure{.type = text}.New()), 0) << text;
    EXPECT_EQ(Token(0).TypeCode(), code) << "'" << text << "'";
    EXPECT_EQ(Token(0).TypeExtra(), extra) << "'" << text << "'";
  }
}

TEST_F(ReaderTest, ConvertsTheCodePageAndDropsTrailingBlanks) {
  ASSERT_GT(Reads(Exposure{.lastName = "M\x81ller  ", .firstName = " Ren\x82", .responsible = "   "}.New()),
            0);
  EXPECT_EQ(Token(0).LastName(), "Müller");
  EXPECT_EQ(Token(0).FirstName(), " René");
  EXPECT_EQ(Token(0).Responsible(), "");
}

TEST_F(ReaderTest, ConsumesWhatItDoesNotKnow) {
  std::string known = Exposure{}.New() + "more";  // behind the last string
  known[0] = static_cast<char>(known.size());
  const std::string unknown = Record('Q', {"whatever"});
  const std::string shortest = Length(4) + "Z#";
  EXPECT_EQ(Reads(unknown + known + shortest + known + unknown),
            static_cast<std::int64_t>(2 * (known.size() + unknown.size()) + shortest.size()));
  EXPECT_EQ(reader_.Count(), 2);
  EXPECT_EQ(reader_.GetTokenCount(), 5);
}

TEST_F(ReaderTest, StopsAtTheMaximum) {
  const std::string record = Exposure{}.New();
  EXPECT_EQ(Reads(record + record + record, 1), static_cast<std::int64_t>(record.size()));
  EXPECT_EQ(reader_.Count(), 1);
  EXPECT_EQ(Reads(record, 0), 0);
  EXPECT_EQ(reader_.LastErr(), kNoError);
}

TEST_F(ReaderTest, StopsBehindAZeroLength) {
  const std::string record = Exposure{}.New();
  EXPECT_EQ(Reads(record + Length(0) + record), static_cast<std::int64_t>(record.size() + 2));
  EXPECT_EQ(reader_.Count(), 1);
  EXPECT_EQ(reader_.GetTokenCount(), 1);
  EXPECT_EQ(Reads(Length(0)), 2);
}

TEST_F(ReaderTest, TellsNothingThereFromAFailure) {
  EXPECT_EQ(Reads(""), 0);
  EXPECT_EQ(reader_.LastErr(), kNoError);
  EXPECT_EQ(reader_.Count(), 0);
  EXPECT_EQ(reader_.GetTokenCount(), 0);
  EXPECT_FALSE(reader_.OpenMailslot((folder_ / "missing.sdx").string()));
  EXPECT_EQ(reader_.LastErr(), kFileNotFound);
  EXPECT_FALSE(reader_.OpenMailslot(folder_.Path().string()));
  EXPECT_EQ(reader_.LastErr(), kPathAccess);
  EXPECT_EQ(reader_.ReadMailslot(kAll), 0);  // nothing is open
}

TEST_F(ReaderTest, TakesNothingOfADamagedFile) {
  const std::string good = Exposure{}.New();
  const auto withoutItsEnd = [](std::string record) {
    record.pop_back();  // the last terminator
    record[0] = static_cast<char>(record.size());
    return record;
  };
  const Table<const char*, std::string> rows = {
      {"length 1", Length(1) + "T#rest"},
      {"length 3", Length(3) + "T#rest"},
      {"length -32768", Length(-32768) + "T#rest"},
      {"longer than the file", Length(32767) + "T#rest"},
      {"no strings", Length(4) + "T#"},
      {"nineteen strings", withoutItsEnd(good)},
      {"nine strings", withoutItsEnd(Exposure{}.Information())},
      {"no terminator", Length(500) + "T#" + std::string(496, 'x')}};
  for (const auto& [name, bytes] : rows) {
    EXPECT_EQ(Reads(bytes), 0) << name;
    EXPECT_EQ(reader_.LastErr(), kBadRecordLength) << name;
    EXPECT_EQ(Reads(good + bytes), 0) << name << " behind a good record";
    EXPECT_EQ(reader_.Count(), 0) << name;
    EXPECT_GE(reader_.GetTokenCount(), 1) << name;
  }
}

TEST_F(ReaderTest, LeavesARecordThatIsStillBeingWritten) {
  const std::string first = Exposure{.lastName = "First, a longer name"}.New();
  const std::string second = Exposure{.lastName = "Second"}.New();
  for (std::size_t written = 0; written < second.size(); ++written) {
    EXPECT_EQ(Reads(first + second.substr(0, written)), static_cast<std::int64_t>(first.size()))
        << "after " << written << " bytes";
    EXPECT_EQ(reader_.Count(), 1) << "after " << written << " bytes";
  }
}

TEST_F(ReaderTest, SurvivesEveryTruncationAndNoise) {
  std::string file = Exposure{}.Information();
  for (std::size_t i = 0; i < 5; ++i) file += Exposure{.lastName = std::string(i * 9, 'n')}.New();
  for (std::size_t length = 0; length <= file.size(); ++length) {
    const std::int64_t position = Reads(file.substr(0, length));
    ASSERT_GE(position, 0);
    ASSERT_LE(position, static_cast<std::int64_t>(length));
    for (std::int64_t i = 0; i < reader_.Count(); ++i) Token(i);
  }
  std::mt19937 random(20240401);
  for (int round = 0; round < 300; ++round) {
    std::string noise = file;
    for (int flips = round % 40; flips >= 0; --flips)
      noise[random() % noise.size()] = static_cast<char>(random());
    const std::int64_t position = Reads(noise);
    ASSERT_LE(position, static_cast<std::int64_t>(noise.size()));
    for (std::int64_t i = 0; i < reader_.Count(); ++i) Token(i);
  }
}

TEST_F(ReaderTest, ReadsRecordsAcrossItsBuffer) {
  std::string bytes;
  const int count = 30'000;
  for (int i = 0; i < count; ++i) bytes += Exposure{.lastName = "Name " + std::to_string(i)}.New();
  ASSERT_GT(bytes.size(), 2 * ByteWindow::kSize);
  ASSERT_EQ(Reads(bytes), static_cast<std::int64_t>(bytes.size()));
  ASSERT_EQ(reader_.Count(), count);
  CToken token;
  for (int i = 0; i < count; ++i) {
    ASSERT_TRUE(reader_.Item(i, token));
    ASSERT_EQ(token.LastName(), "Name " + std::to_string(i));
  }
  EXPECT_EQ(Token(7).LastName(), "Name 7");  // going back is slower but allowed
}

TEST_F(ReaderTest, GivesNoTokenThatIsNoLongerThere) {
  const std::string record = Exposure{}.New();
  ASSERT_GT(Reads(record + record), 0);
  CToken token;
  EXPECT_FALSE(reader_.Item(2, token));
  EXPECT_FALSE(reader_.Item(-1, token));
  reader_.Remove(0);
  EXPECT_EQ(reader_.Count(), 1);
  reader_.CloseMailslot();
  EXPECT_FALSE(reader_.Item(0, token));
  std::string many;
  for (int i = 0; i < 20'000; ++i) many += record;
  ASSERT_GT(Reads(many), 0);
  Token(0);
  std::filesystem::resize_file(file_, 10);  // cut by somebody while it is read
  EXPECT_FALSE(reader_.Item(19'999, token));
}

TEST_F(ReaderTest, ReadsAPieceOfAFile) {
  const std::string one = Exposure{.lastName = "One"}.New();
  const std::string two = Exposure{.lastName = "Two"}.New();
  WriteFile(file_, one + two + one);
  const std::uint64_t end = one.size() + two.size();
  ASSERT_TRUE(reader_.OpenPiece(file_, one.size(), end));
  EXPECT_EQ(reader_.ReadMailslot(kAll), static_cast<std::int64_t>(end));
  ASSERT_EQ(reader_.Count(), 1);
  EXPECT_EQ(Token(0).LastName(), "Two");
  ASSERT_TRUE(reader_.OpenPiece(file_, 10 * end));
  EXPECT_EQ(reader_.ReadMailslot(kAll), static_cast<std::int64_t>(10 * end));  // nothing there yet
  EXPECT_EQ(reader_.LastErr(), kNoError);
}

}  // namespace
}  // namespace varnlog::intake
