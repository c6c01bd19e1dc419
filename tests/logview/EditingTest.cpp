#include "logview/EditRules.h"
#include "logview/PendingEdits.h"
#include "logview/WriteRow.h"
#include "tests/logview/LogFixture.h"
#include "tests/support/Table.h"

namespace varnlog::logview {
namespace {

using namespace core::literals;

EnteredValues Entered(std::initializer_list<std::pair<int, std::string>> cells) {
  EnteredValues buffer;
  for (const auto& [column, text] : cells) buffer.at(static_cast<std::size_t>(column)) = text;
  return buffer;
}

class EditingTest : public LogFixture {
 protected:
  RowWritten Edits(int row, const EnteredValues& entered, const intake::ToothScheme& scheme) {
    const auto rows = Rows();
    rows->Move(row);
    return WriteRow(*rows, rows->Bookmark(), entered, texts_, scheme, edits_);
  }
  RowWritten Edits(int row, const EnteredValues& entered) { return Edits(row, entered, fdi_); }
  void TakesOpenExposure(std::map<std::string, std::string> values) {
    for (const Column& column : kColumns) {
      if (!column.editFlag.empty()) values.emplace(column.editFlag, "1");
    }
    TakesExposure(values);
  }

  CEdits edits_;
  FakeUser user_;
};

TEST_F(EditingTest, OnlyOpenValuesCanBeEdited) {
  TakesExposure({{"tXraySSex", "f"}, {"tXrayBEdPreg", "1"}, {"tXrayBEdVolt", "0"}, {"tXrayBEdCur", "1"}});
  const Table<int, bool, bool, CellState> cases = {{-1, false, false, CellState::kPlain},
                                                   {kNumberColumn, false, false, CellState::kPlain},
                                                   {kDateColumn, false, false, CellState::kPlain},
                                                   {kPatientColumn, false, false, CellState::kPlain},
                                                   {kPregnancyColumn, true, false, CellState::kEdit},
                                                   {7, false, true, CellState::kLocked},
                                                   {8, true, false, CellState::kEdit},
                                                   {kRetakeColumn, false, true, CellState::kLocked},
                                                   {kCommentColumn, true, false, CellState::kEdit},
                                                   {13, false, false, CellState::kPlain}};
  const auto rows = Rows();
  for (const auto& [column, allowed, locked, state] : cases) {
    const EditDecision decision = BeforeColEdit(*rows, column);
    EXPECT_EQ(decision.allowed, allowed) << column;
    EXPECT_EQ(decision.message == "RS_ERR_CHANGE"_key, locked) << column;
    EXPECT_FALSE(decision.beep) << column;
    EXPECT_EQ(CellStateOf(*rows, column), state) << column;
  }
  const EditDecision pressed = ButtonClick(*rows, kRetakeColumn);
  EXPECT_TRUE(!pressed.allowed && pressed.beep);
  EXPECT_EQ(pressed.message, "RS_ERR_CHANGE"_key);
}

TEST_F(EditingTest, ThePregnancyOfAMaleBeepsEvenWhenItsFlagIsSet) {
  TakesExposure({{"tXraySSex", "m"}, {"tXrayBEdPreg", "1"}, {"tXrayBEdDiagRetry", "1"}});
  const auto rows = Rows();
  for (const EditDecision& decision :
       {BeforeColEdit(*rows, kPregnancyColumn), ButtonClick(*rows, kPregnancyColumn)}) {
    EXPECT_FALSE(decision.allowed);
    EXPECT_TRUE(decision.beep);
    EXPECT_FALSE(decision.message);
  }
  EXPECT_EQ(CellStateOf(*rows, kPregnancyColumn), CellState::kNoneEdit);
  EXPECT_TRUE(ButtonClick(*rows, kRetakeColumn).allowed);
}

TEST_F(EditingTest, TypedTextsAreLimitedToTheirFields) {
  TakesExposure({});
  const auto rows = Rows();
  const std::map<int, int> limits = {{4, 4}, {5, 16}, {6, 8}, {7, 5}, {8, 5}, {10, 16}, {11, 12}, {12, 255}};
  for (int column = -1; column <= kColumnCount; ++column) {
    const auto limit = InputLimit(*rows, column);
    EXPECT_EQ(limit.value_or(-1), limits.contains(column) ? limits.at(column) : -1) << column;
  }
}

TEST_F(EditingTest, WritesEachColumnInItsStoredForm) {
  TakesOpenExposure({{"tXraySType", "XI"}});
  Edits(0,
        Entered({{kPregnancyColumn, "unbekannt"},
                 {kRegionColumn, " t "},
                 {6, "120"},
                 {7, "60"},
                 {8, "7"},
                 {kDoseColumn, "3.4"},
                 {kRetakeColumn, "Wiederholung"},
                 {11, "Dr. Weiß"},
                 {kCommentColumn, "unscharf; \"verwackelt\""}}),
        us_);
  const std::map<std::string, std::string> expected = {
      {"tXraySPreg", "-"},         {"tXraySRegio", "85"},    {"tXraySRadDur", "120"},
      {"tXraySVolt", "60"},        {"tXraySCur", "7"},       {"tXraySDose", "3.4"},
      {"tXraySDiagRetry", "Wdh."}, {"tXraySDr", "Dr. Weiß"}, {"tXraySComment", "unscharf; \"verwackelt\""},
      {"tXraySType", "XI"}};
  for (const auto& [field, value] : expected) EXPECT_EQ(Stored(0, field), value) << field;
  EXPECT_EQ(edits_.Count(), 8U) << "the comment is never locked";
  EXPECT_TRUE(edits_.Contains("1,tXrayBEdPreg"));
}

TEST_F(EditingTest, ARegionIsReadByTheTypeEnteredWithItAndAnUnknownWordIsEmpty) {
  TakesOpenExposure({{"tXraySType", "XI"}});
  Edits(0, Entered({{kTypeColumn, "XP"}, {kRegionColumn, "32"}}), us_);
  EXPECT_EQ(Stored(0, "tXraySRegio"), "32");
  Edits(0, Entered({{kTypeColumn, "xi"}, {kRegionColumn, "32"}}), us_);
  EXPECT_EQ(Stored(0, "tXraySRegio"), "48");
  Edits(0, Entered({{kPregnancyColumn, "ja"}}));
  Edits(0, Entered({{kPregnancyColumn, "vielleicht"}}));
  EXPECT_EQ(Stored(0, "tXraySPreg"), "");
}

TEST_F(EditingTest, NumberDateAndPatientAreRefusedAndTheRestIsWritten) {
  TakesOpenExposure({{"tXraySName", "Müller"}});
  const auto refused = Edits(0, Entered({{0, "9"}, {2, "Meier"}, {7, "65"}})).refused;
  EXPECT_EQ(refused, (std::vector<std::string>{"Spalte 0 darf nicht editiert werden",
                                               "Spalte 2 darf nicht editiert werden"}));
  EXPECT_EQ(Stored(0, "tXraySName"), "Müller");
  EXPECT_EQ(Stored(0, "tXraySVolt"), "65");
  EXPECT_EQ(edits_.Count(), 1U);
}

TEST_F(EditingTest, AValueThatIsTooLongChangesNothingAndLocksNothing) {
  TakesOpenExposure({{"tXraySDose", "1"}, {"tXraySVolt", "60"}});
  try {
    Edits(0, Entered({{7, "65"}, {kDoseColumn, std::string(33, 'x')}}));
    ADD_FAILURE() << "33 characters were taken";
  } catch (const dao::EngineError& error) {
    EXPECT_EQ(DataErrorKey(DataErrorOf(error.number())), "RS_ERR_FIELDLEN"_key);
  }
  EXPECT_EQ(Stored(0, "tXraySVolt"), "60");
  EXPECT_EQ(Stored(0, "tXraySDose"), "1");
  EXPECT_EQ(edits_.Count(), 0U);
}

TEST_F(EditingTest, ARowThatIsGoneIsReportedAsDeleted) {
  TakesOpenExposure({{"tXraySVolt", "60"}});
  const auto rows = Rows();
  const dao::Bookmark bookmark = rows->Bookmark();
  LosesRow(1);
  try {
    WriteRow(*rows, bookmark, Entered({{7, "65"}}), texts_, fdi_, edits_);
    ADD_FAILURE() << "a deleted row was written";
  } catch (const dao::EngineError& error) {
    EXPECT_EQ(DataErrorKey(DataErrorOf(error.number())), "RS_ERR_RECDEL"_key) << error.what();
  }
  EXPECT_EQ(edits_.Count(), 0U);
}

// The editor was open when another workstation entered and locked the value.
TEST_F(EditingTest, AValueThatWasLockedMeanwhileIsNotOverwritten) {
  TakesOpenExposure({{"tXraySVolt", "60"}, {"tXraySType", "XI"}});
  const auto rows = Rows();
  Damages("UPDATE TXray SET tXrayBEdVolt = 0");
  const RowWritten written =
      WriteRow(*rows, rows->Bookmark(), Entered({{7, "65"}, {8, "7"}}), texts_, fdi_, edits_);
  EXPECT_TRUE(written.isLocked);
  EXPECT_EQ(Stored(0, "tXraySVolt"), "60");
  EXPECT_EQ(Stored(0, "tXraySCur"), "") << "all of it or nothing";
  EXPECT_EQ(Stored(0, "tXrayBEdVolt"), "0");
  EXPECT_EQ(edits_.Count(), 0U);

  // In the moment between reading the row and writing it, when the region's form is asked for.
  struct LocksMeanwhile final : intake::ToothScheme {
    explicit LocksMeanwhile(dao::Database& log) : log_(log) {}
    [[nodiscard]] bool SchemeUS() const override {
      test::Damages(log_, "UPDATE TXray SET tXrayBEdCur = 0");
      return false;
    }
    dao::Database& log_;
  };
  try {
    static_cast<void>(Edits(0, Entered({{kRegionColumn, "11"}, {8, "7"}}), LocksMeanwhile(*log_)));
    ADD_FAILURE() << "written over";
  } catch (const dao::EngineError& error) {
    EXPECT_EQ(error.number(), dao::ErrorNumber::kDataChanged);
  }
  EXPECT_EQ(Stored(0, "tXraySCur"), "");
}

TEST_F(EditingTest, APendingEntryIsTakenBackToTheValueBeforeTheFirstCorrection) {
  TakesOpenExposure({{"tXraySVolt", "60"}});
  const auto rows = Rows();
  for (const char* volt : {"65", "66"}) Edits(0, Entered({{7, volt}, {kDoseColumn, volt}}));
  EXPECT_TRUE(TakeEntryBack(*rows, rows->Bookmark(), 7, edits_));
  EXPECT_TRUE(TakeEntryBack(*rows, rows->Bookmark(), kDoseColumn, edits_));
  EXPECT_FALSE(TakeEntryBack(*rows, rows->Bookmark(), 7, edits_)) << "nothing is pending any more";
  EXPECT_EQ(Stored(0, "tXraySVolt"), "60");
  const auto after = Rows();
  EXPECT_TRUE(after->Fields("tXraySDose").IsNull()) << "never written, as before";
  EXPECT_TRUE(after->Fields("tXrayBEdVolt").Boolean());

  Edits(0, Entered({{7, "65"}}));
  EXPECT_EQ(log_->OpenRecordset(PendingRows(edits_))->RecordCount(), 1);
  Damages("UPDATE TXray SET tXrayBEdVolt = 0");
  EXPECT_FALSE(TakeEntryBack(*rows, rows->Bookmark(), 7, edits_)) << "locked by another workstation";
  EXPECT_EQ(Stored(0, "tXraySVolt"), "65");
}

TEST_F(EditingTest, PendingValuesAreNamedByPatientDateAndColumn) {
  texts_.texts["RC_MORE"] = "und $lngCount$ weitere";
  for (int row = 0; row < 12; ++row) {
    TakesOpenExposure({{"tXraySName", "Abel"},
                       {"tXraySFirstname", "Eva"},
                       {"tXrayDBirthday", "1960-02-01 00:00:00"},
                       {"tXrayTs", row == 0 ? "2024-03-05 09:00:00" : "2024-03-05 08:00:00"}});
    Edits(row, Entered({{7, row == 0 ? "65" : ""}}));
  }
  const std::string lines = DescribePending(*log_, edits_, texts_, fdi_, platform::ShortDate());
  EXPECT_TRUE(lines.starts_with("Abel, Eva *01.02.1960, 05.03.2024: RS_KV 65\n")) << lines;
  EXPECT_NE(lines.find("RS_KV RC_EMPTYVALUE\n"), std::string::npos);
  EXPECT_TRUE(lines.ends_with("\nund 2 weitere")) << lines;
}

TEST_F(EditingTest, AValueCorrectedTwiceIsLockedOnceByTheFlush) {
  TakesExposure({{"tXrayBEdVolt", "1"}, {"tXrayBEdCur", "1"}});
  Edits(0, Entered({{7, "65"}}));
  Edits(0, Entered({{7, "66"}}));
  EXPECT_EQ(edits_.Count(), 1U);
  EXPECT_TRUE(BeforeColEdit(*Rows(), 7).allowed);

  const FlushResult result = FlushPendingEdits(*log_, edits_, user_);
  EXPECT_EQ(result.locked, 1U);
  EXPECT_FALSE(result.error);
  EXPECT_EQ(edits_.Count(), 0U);
  EXPECT_EQ(Stored(0, "tXraySVolt"), "66");
  EXPECT_FALSE(BeforeColEdit(*Rows(), 7).allowed);
  EXPECT_TRUE(BeforeColEdit(*Rows(), 8).allowed);
  EXPECT_TRUE(BeforeColEdit(*Rows(), kCommentColumn).allowed);
}

TEST_F(EditingTest, TheFlushBeepsForAMissingRowAndGoesOn) {
  for (int row = 0; row < 3; ++row) TakesExposure({{"tXrayBEdVolt", "1"}});
  for (int row = 0; row < 3; ++row) Edits(row, Entered({{7, "65"}}));
  LosesRow(2);
  const FlushResult result = FlushPendingEdits(*log_, edits_, user_);
  EXPECT_EQ(result.locked, 2U);
  EXPECT_EQ(result.missing, 1U);
  EXPECT_EQ(user_.beeps, 1);
  EXPECT_EQ(edits_.Count(), 0U);
  EXPECT_EQ(Stored(1, "tXrayBEdVolt"), "0") << "the third row, now the second";
}

TEST_F(EditingTest, AFailedFlushLocksNothing) {
  TakesExposure({{"tXrayBEdVolt", "1"}, {"tXrayBEdCur", "1"}});
  edits_.Add({"1", "tXrayBEdVolt"});
  edits_.Add({"1", "tXrayBEdNoSuchField"});
  edits_.Add({"1", "tXrayBEdCur"});
  const FlushResult result = FlushPendingEdits(*log_, edits_, user_);
  ASSERT_TRUE(result.error);
  EXPECT_EQ(result.error->number(), dao::ErrorNumber::kItemNotFound);
  EXPECT_EQ(result.locked, 0U);
  EXPECT_EQ(edits_.Count(), 3U);
  EXPECT_EQ(Stored(0, "tXrayBEdVolt"), "1");
}

}  // namespace
}  // namespace varnlog::logview
