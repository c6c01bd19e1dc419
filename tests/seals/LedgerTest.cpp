#include <cctype>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>

#include "seals/History.h"
#include "tests/Paths.h"
#include "tests/seals/SealedLog.h"

namespace varnlog::seals {
namespace {

using testing::ElementsAre;

class LedgerTest : public SealedLog {
 protected:
  /// "kind field before>after account" of each entry; NULL is "-".
  std::vector<std::string> History(std::int64_t exposure) {
    std::vector<std::string> lines;
    for (const HistoryEntry& entry : ReadHistory(*log_, exposure)) {
      lines.push_back(entry.kind + " " + entry.field + " " + entry.before.value_or("-") + ">" +
                      entry.after.value_or("-") + " " + entry.origin.account);
    }
    return lines;
  }
};

TEST_F(LedgerTest, KeepsEachChangeWithItsAuthorAndSealsTheTransaction) {
  EXPECT_EQ(Opens().tablesMade, !test::LogsAreOnServer());
  TakesIn(3);
  Enters(1, "tXraySVolt", "65");
  author_.account = "bob";
  EXPECT_EQ(Opens().found, 0);
  Enters(1, "tXraySVolt", "66");
  Enters(1, "tXraySComment", "erste");
  Enters(1, "tXraySComment", "");
  SuiteChanges(1, {{"tXraySName", "MÜLLER 1"}, {"tXrayBEdDiagRetry", "0"}, {"tXraySFirstname", "Jörg"}});
  Locks(1, "tXrayBEdVolt");
  EXPECT_THAT(History(1),
              ElementsAre("intake  ->- anna", "entry tXraySVolt ->65 anna", "correction tXraySVolt 65>66 bob",
                          "comment tXraySComment ->erste bob", "comment tXraySComment erste> bob",
                          "suite tXraySName Müller 1>MÜLLER 1 bob", "suite tXrayBEdDiagRetry 1>0 bob",
                          "lock tXrayBEdVolt 1>0 bob"));
  EXPECT_THAT(History(2), ElementsAre("intake  ->- anna"));
  const Verification result = Verified();
  EXPECT_EQ(result.exposures, 3);
  EXPECT_EQ(result.entries, 7);
  EXPECT_EQ(result.seals, 8) << "take-over, intake, and one a transaction";
  ExpectSound();
}

TEST_F(LedgerTest, TheDigestsAreThoseOfTheDocument) {
  std::ifstream file(std::filesystem::path(VARNLOG_SOURCE_DIR) / "docs/seals.md");
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  Opens();
  for (int step = 0; step < 3; ++step) {
    if (step == 1) TakesIn(1);
    if (step == 2) Enters(1, "tXraySVolt", "65");
    const Head head = Verified().head;
    EXPECT_NE(document.find("| " + std::to_string(head.number) + ", "), std::string::npos);
    EXPECT_NE(document.find("| `" + head.digest + "` |"), std::string::npos) << head.digest;
  }
  EXPECT_NE(document.find("`" + PrintedAnchor(Verified().head) + "`"), std::string::npos);
}

TEST_F(LedgerTest, WhatIsRolledBackOrRefusedLeavesNoTrace) {
  Opens();
  TakesIn(2);
  const Head before = Verified().head;
  workspace_->BeginTrans();
  TakesIn(2);
  Enters(1, "tXraySCur", "8");
  workspace_->Rollback();
  // Locked: the rule refuses it, and with it the row of the history.
  workspace_->BeginTrans();
  EXPECT_THROW(Enters(2, "tXraySVolt", "61"), dao::EngineError);
  {
    // The ledger itself refuses it where the rules are suspended, as they are while exposures are taken in.
    const dao::RulesSuspension suspension = log_->SuspendRules();
    EXPECT_THROW(SuiteChanges(2, {{"tXraySSex", "m"}}), dao::EngineError);
  }
  workspace_->CommitTrans();
  EXPECT_EQ(Verified().head, before);
  ExpectSound();
  TakesIn(1);
  ExpectSound();
}

TEST_F(LedgerTest, AnotherProgramsRowsAreSealedAsFound) {
  Opens();
  TakesIn(2);
  OpensUnsealed();
  ledger_.reset();
  TakesIn(3);
  EXPECT_EQ(Verified().allFindings, 3);
  // Another workstation that had the log open seals them before its own.
  ledger_ = std::make_shared<Ledger>(author_, clock_);
  log_->SetJournal(ledger_);
  TakesIn(1);
  ExpectSound();
  EXPECT_EQ(Verified().notes.size(), 1U);
  OpensUnsealed();
  ledger_.reset();
  TakesIn(2);
  EXPECT_EQ(Opens().found, 2);
  ExpectSound();
}

TEST_F(LedgerTest, EntriesOfARunThatDiedAreLockedByTheNextOfItsWorkstation) {
  Opens();
  TakesIn(7);
  for (const std::int64_t exposure : {1, 3}) Enters(exposure, "tXraySVolt", "65");
  Locks(3, "tXrayBEdVolt");     // closed in order up to here ...
  Enters(5, "tXraySCur", "8");  // ... and not from here
  SuiteChanges(5, {{"tXrayBEdDr", "0"}});
  author_ = {"bob", "", "Röntgen 2", "varnlog test", platform::CurrentAuthor().run};
  EXPECT_EQ(Opens().locked, 0) << "of another workstation";
  Enters(7, "tXraySVolt", "70");
  author_.run = "2-2-b";
  EXPECT_EQ(Opens().locked, 0) << "the run is still going on";
  author_ = {"anna", "", "Röntgen 1", "varnlog test", "3-3-c"};
  EXPECT_EQ(Opens().locked, 1);
  EXPECT_EQ(Value(5, "tXrayBEdCur"), "0");
  EXPECT_EQ(Value(7, "tXrayBEdVolt"), "1");
  EXPECT_EQ(Opens().locked, 0);
  ExpectSound();
}

TEST_F(LedgerTest, StrangeNamesAndAClockThatGoesBackAreSealedAsTheyAre) {
  author_ = {"a'\"b\n", std::string(300, 'x') + "Ж", "9:x,", "\t", "'"};
  Opens();
  TakesIn(1);
  clock_ = platform::FixedClock(*platform::DateTime::FromCivil(2020, 1, 1));
  Enters(1, "tXraySComment", "3:a,-,\n'");
  ExpectSound();
  ASSERT_EQ(Verified().notes.size(), 1U);
  EXPECT_EQ(Verified().notes[0].what, Note::What::kClockSetBack);
  EXPECT_EQ(ReadHistory(*log_, 1).back().origin.fullName, author_.fullName);
}

TEST(AnchorTest, IsReadAsItWasPrintedAndTyped) {
  const std::string digest = "00112233445566778899aabbccddeeff00112233445566778899aabbccddeeff";
  const std::string printed = PrintedAnchor({1523, digest});
  for (const std::string& text : {printed, "1523-" + digest, " " + printed + " "}) {
    const auto anchor = ReadAnchor(text);
    ASSERT_TRUE(anchor) << text;
    EXPECT_EQ(anchor->seal, 1523);
    EXPECT_TRUE(anchor->Names(digest)) << anchor->digits;
  }
  std::string typed;
  for (const char c : printed)
    if (c != '-') typed += c == '0' ? 'o' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  EXPECT_TRUE(ReadAnchor(typed)) << typed;
  for (std::size_t i = 0; i < printed.size(); ++i) {
    std::string wrong = printed;
    if (wrong[i] == '-') continue;
    wrong[i] = wrong[i] == '3' ? '4' : '3';
    EXPECT_FALSE(ReadAnchor(wrong)) << wrong;
  }
  EXPECT_FALSE(ReadAnchor(""));
  EXPECT_FALSE(ReadAnchor("1523-abc"));
}

}  // namespace
}  // namespace varnlog::seals
