#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "legacy/LogExamination.h"
#include "tests/legacy/Samples.h"
#include "tests/support/Table.h"

namespace varnlog::legacy {
namespace {

using namespace std::string_literals;
using Verdict = LogExamination::Verdict;

constexpr const char* kJet4Log = "log-1.1-jet4-scratch.mdb";
constexpr std::size_t kJet4Page = 4096;

LogExamination ExamineContent(const std::string& content) {
  return Examine(samples::AsBytes(content));
}

struct BrokenFile {
  const char* name;
  std::string content;
  Verdict verdict;
  FaultKind kind;
  std::uint64_t read = 0;  // exposures
};

std::string Cut(std::size_t length) {
  return samples::ReadOurs(kJet4Log).substr(0, length);
}

std::string NewerVersion() {
  std::string content = samples::ReadOurs(kJet4Log);
  return content.replace(4, 19, "Standard ACE DB\0\x02\0\0"s);
}

std::string WithZeroedPage(std::size_t page) {
  std::string content = samples::ReadOurs(kJet4Log);
  return content.replace(page * kJet4Page, kJet4Page, std::string(kJet4Page, '\0'));
}

std::vector<BrokenFile> BrokenFiles() {
  return {
      {"empty", "", Verdict::kUnreadable, FaultKind::kNotJet},
      {"renamed text", samples::ReadOurs("broken-text-renamed.mdb"), Verdict::kUnreadable,
       FaultKind::kNotJet},
      {"newer", NewerVersion(), Verdict::kUnreadable, FaultKind::kUnknownVersion},
      {"tiny", Cut(1500), Verdict::kUnreadable, FaultKind::kTruncated},
      {"signature only", Cut(kSignatureLength), Verdict::kUnreadable, FaultKind::kTruncated},
      {"first page only", Cut(kJet4Page), Verdict::kUnreadable, FaultKind::kCatalogueUnread},
      {"no catalogue", WithZeroedPage(2), Verdict::kUnreadable, FaultKind::kCatalogueUnread},
      {"no definition", WithZeroedPage(10), Verdict::kUnreadable, FaultKind::kPageType},
      {"no settings", WithZeroedPage(7), Verdict::kDamaged, FaultKind::kPageType, 262},
      {"cut within a page", Cut(82697), Verdict::kDamaged, FaultKind::kTruncated, 77},
      {"cut between pages", Cut(126976), Verdict::kDamaged, FaultKind::kRowCount, 205},
      {"page zeroed", WithZeroedPage(12), Verdict::kDamaged, FaultKind::kRowCount, 250},
      {"bytes flipped", samples::ReadOurs("broken-flipped.mdb"), Verdict::kDamaged, FaultKind::kColumnMissing,
       425},
      {"no settings table", samples::ReadOurs("broken-no-usage-map.mdb"), Verdict::kDamaged,
       FaultKind::kTableMissing, 20},
      {"another program's", samples::ReadOurs("foreign-jet4.mdb"), Verdict::kForeign,
       FaultKind::kTableMissing},
  };
}

TEST(BrokenFiles, AreToldApartAndGiveWhatTheyStillHold) {
  for (const BrokenFile& file : BrokenFiles()) {
    SCOPED_TRACE(file.name);
    const auto found = ExamineContent(file.content);
    EXPECT_EQ(static_cast<int>(found.verdict), static_cast<int>(file.verdict));
    EXPECT_TRUE(found.faults.Has(file.kind));
    EXPECT_EQ(found.exposures.read, file.read);
    for (const Fault& fault : found.faults.First()) EXPECT_FALSE(Describe(fault).empty());
  }
}

TEST(BrokenFiles, AnEndlessMemoLosesOnlyItsOwnValue) {
  const std::string content = samples::ReadOurs("broken-endless-memo.mdb");
  const auto database = JetDatabase::Open(samples::AsBytes(content));
  ASSERT_TRUE(database);
  const auto notes = database->Table("TNote");
  ASSERT_TRUE(notes);
  FaultList faults;
  const RowCount count = database->Read(
      *notes, [](const JetRow&) { return true; }, faults);
  EXPECT_EQ(count.read, 3U);
  EXPECT_EQ(count.whole, 2U);
  EXPECT_EQ(faults.Count(), 1U);
  EXPECT_TRUE(faults.Has(FaultKind::kLongValue));
}

// A log one of whose tables the catalogue says to be kept in another file.
std::string WithLinkedTable(const std::string& name) {
  std::string content = samples::ReadOurs("log-1.1-jet3-cp1252.mdb");
  const Bytes bytes = samples::AsBytes(content);
  const auto header = ReadHeader(bytes);
  const JetPages pages(bytes, *header);
  const auto catalogue = ReadTable(pages, JetText(*header), 2);
  const std::size_t typeAt = 1 + catalogue->Column("Type")->fixedOffset;
  for (const std::uint32_t number : pages.DataPagesOf(2)) {
    PageBuffer buffer;
    const auto page = DataPage::Open(pages, number, 2, buffer);
    for (int row = 0; row < page->RowCount(); ++row) {
      const auto slot = page->Slot(row);
      const auto start = static_cast<std::size_t>(slot->bytes.data() - bytes.data());
      const std::string stored = content.substr(start, slot->bytes.size());
      if (stored.find(name) != std::string::npos) content[start + typeAt] = 6;
    }
  }
  return content;
}

TEST(BrokenFiles, LinkedTablesAreNamedAndHaveNoRows) {
  const std::string content = WithLinkedTable("TXray");
  const auto database = JetDatabase::Open(samples::AsBytes(content));
  ASSERT_TRUE(database);
  EXPECT_EQ(database->LinkedTables(), std::vector<std::string>{"TXray"});
  EXPECT_EQ(database->TableNames(), std::vector<std::string>{"TConfig"});
  const auto found = ExamineContent(content);
  EXPECT_EQ(found.verdict, Verdict::kForeign);
  EXPECT_TRUE(found.faults.Has(FaultKind::kTableLinked));
}

// Where the fixed columns of a row of exposures begin: id, birth date, time stamp.
std::size_t FixedColumns(const std::string& log, std::size_t page, std::size_t row) {
  ByteReader reader(samples::AsBytes(log));
  return page * kJet4Page + (reader.U16(page * kJet4Page + 14 + 2 * row) & 0x1fffU) + 2;
}

TEST(BrokenFiles, ContradictionsWithinSoundPagesAreSeen) {
  const std::string sound = samples::ReadOurs(kJet4Log);
  const std::size_t first = FixedColumns(sound, 13, 1);
  const std::size_t second = FixedColumns(sound, 13, 2);

  std::string doubled = sound;
  doubled.replace(second, 4, sound.substr(first, 4));
  EXPECT_TRUE(ExamineContent(doubled).faults.Has(FaultKind::kDoubledId));

  for (const auto& [what, days, kind] :
       Table<const char*, double, FaultKind>{{"no date", 1e9, FaultKind::kDate},
                                             {"before X-rays", -1514, FaultKind::kImplausibleDate},
                                             {"year 3000", 401769, FaultKind::kImplausibleDate}}) {
    SCOPED_TRACE(what);
    std::string dated = sound;
    dated.replace(first + 12, 8, reinterpret_cast<const char*>(&days), 8);
    const auto found = ExamineContent(dated);
    EXPECT_TRUE(found.faults.Has(kind));
    EXPECT_EQ(found.exposures.read, 262U);
  }

  std::string renamed = sound;
  const std::string name = "t\0X\0r\0a\0y\0S\0D\0r\0"s;
  ASSERT_NE(sound.find(name), std::string::npos);
  renamed[sound.find(name) + 14] = 'x';
  EXPECT_TRUE(ExamineContent(renamed).faults.Has(FaultKind::kColumnMissing));
}

}  // namespace
}  // namespace varnlog::legacy
