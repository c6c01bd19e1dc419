#include "seals/History.h"
#include "seals/SealedFields.h"
#include "tests/seals/SealedLog.h"

namespace varnlog::seals {
namespace {

/// Who comes through the door, and with what in hand.
enum class Door {
  kRecordset,     // the program's windows and commands
  kSuite,         // an information record
  kRepair,        //
  kPlain,         // any program: an UPDATE alone
  kPlainForged,   // with an entry in the history that does not say what is changed
  kPlainSealed,   // with the right entry, but under a seal that is closed
  kPlainHonest,   // with the right entry
  kPlainAsSuite,  // likewise, claiming to be the suite
};

struct Expected {
  FieldRule rule;
  const char* allowed;  // a letter a door: '-' refused, 'o' only while the value's flag is true, 'x' allowed
};

// In the order of Door.
constexpr Expected kTable[] = {
    {FieldRule::kNever, "--------"},   {FieldRule::kSuite, "-xx----x"}, {FieldRule::kValue, "oxx---ox"},
    {FieldRule::kFlag, "xxx---xx"},  // to false; to true only where a name may be changed
    {FieldRule::kComment, "xxx---xx"},
};

class DoorsTest : public SealedLog {
 protected:
  DoorsTest() {
    Opens();
    TakesIn(4);
  }

  struct Try {
    std::size_t field;
    std::int64_t exposure;
    std::string value;

    [[nodiscard]] const std::string& Name() const { return SealedFields()[field]; }
    [[nodiscard]] std::string Where() const { return " WHERE tXrayCulIntIDPk = " + std::to_string(exposure); }
  };

  void Records(const Try& change, const std::string& kind, bool isTrue, const std::string& seal) {
    Executes(
        "INSERT INTO THistory (tXrayCulIntIDPk, tHistSField, tHistSOld, tHistSNew, tHistSKind, tHistNSeal) "
        "SELECT tXrayCulIntIDPk, '" +
        change.Name() + "', CAST(" + change.Name() + " AS TEXT), '" + (isTrue ? change.value : "other") +
        "', '" + kind + "', " + seal + " FROM TXray" + change.Where());
  }

  void ComesPlain(Door door, const Try& change) {
    const std::string next = "(SELECT max(tSealCulNrPk) + 1 FROM TSeal)";
    if (door == Door::kPlainForged) Records(change, "suite", false, next);
    if (door == Door::kPlainSealed) Records(change, "suite", true, "1");
    if (door == Door::kPlainHonest) Records(change, "entry", true, next);
    if (door == Door::kPlainAsSuite) Records(change, "suite", true, next);
    Executes("UPDATE TXray SET " + change.Name() + " = '" + change.value + "'" + change.Where());
  }

  void Comes(Door door, const Try& change) {
    if (door == Door::kRecordset) return Enters(change.exposure, change.Name(), change.value);
    if (door == Door::kSuite) return SuiteChanges(change.exposure, {{change.Name(), change.value}});
    if (door == Door::kRepair) {
      const Purpose purpose(ledger_.get(), SealKind::kRepair);
      return Enters(change.exposure, change.Name(), change.value);
    }
    ComesPlain(door, change);
  }

  /// Whether the value is another one afterwards; nothing stays changed.
  bool GetsThrough(Door door, const Try& change) {
    const std::string before = Value(change.exposure, change.Name());
    workspace_->BeginTrans();
    try {
      Comes(door, change);
    } catch (const dao::EngineError&) {
      workspace_->Rollback();
      return false;
    }
    const bool isThrough = Value(change.exposure, change.Name()) != before;
    workspace_->Rollback();
    return isThrough;
  }
};

TEST_F(DoorsTest, EveryFieldIsClosedToEveryoneWhoHasNoBusinessThere) {
  int doors = 0;
  for (std::size_t field = 1; field < kFieldCount; ++field) {
    const FieldRule rule = RuleOf(field);
    const std::string allowed = kTable[static_cast<std::size_t>(rule)].allowed;
    for (const std::int64_t exposure : {1, 2}) {
      // Exposure 1 has open values, exposure 2 none.
      const bool isFlag = rule == FieldRule::kFlag;
      const std::size_t flag = isFlag ? field : FlagOf(field);
      const bool hasFlag = isFlag || rule == FieldRule::kValue;
      const bool isOpen = hasFlag && Value(exposure, SealedFields()[flag]) == "1";
      const bool isDate = SealedFields()[field] == "tXrayTs" || SealedFields()[field] == "tXrayDBirthday";
      const Try change{field, exposure, isFlag ? (isOpen ? "0" : "1") : isDate ? "2001-01-01 00:00:00" : "7"};
      for (std::size_t door = 0; door < allowed.size(); ++door, ++doors) {
        // A flag opens only for those who may change a name.
        const char rights = isFlag && !isOpen ? kTable[1].allowed[door] : allowed[door];
        const bool expected = rights == 'x' || (rights == 'o' && isOpen);
        EXPECT_EQ(GetsThrough(static_cast<Door>(door), change), expected)
            << change.Name() << " of " << exposure << ", door " << door;
      }
    }
  }
  EXPECT_EQ(doors, 24 * 2 * 8);
  ExpectSound();
}

TEST_F(DoorsTest, NothingIsDeletedOrWrittenOver) {
  Enters(1, "tXraySVolt", "60");
  const char* const statements[] = {
      "DELETE FROM TXray",
      "DELETE FROM THistory",
      "DELETE FROM TSeal",
      "UPDATE TXray SET tXrayCulIntIDPk = 99 WHERE tXrayCulIntIDPk = 1",
      "UPDATE THistory SET tHistSNew = '61'",
      "UPDATE TSeal SET tSealSAccount = 'x'",
      "INSERT OR REPLACE INTO TXray (tXrayCulIntIDPk) VALUES (1)",
      "REPLACE INTO THistory (tHistCulNrPk, tHistNSeal) SELECT 1, max(tSealCulNrPk) + 1 FROM TSeal",
      "REPLACE INTO TSeal (tSealCulNrPk) VALUES (1)",
      "UPDATE OR REPLACE TXray SET tXrayCulIntIDPk = 2 WHERE tXrayCulIntIDPk = 1",
      "INSERT INTO TXray (tXrayCulIntIDPk) VALUES (1) ON CONFLICT DO UPDATE SET tXraySName = 'x'",
      "UPDATE TXray SET tXraySVolt = x'3630' WHERE tXrayCulIntIDPk = 1",
  };
  for (const char* const statement : statements)
    EXPECT_THROW(Executes(statement), dao::EngineError) << statement;
  ExpectSound();
}

TEST_F(DoorsTest, TheRulesAreRestoredWhenSomebodyRemovedThem) {
  Executes("DROP TRIGGER rXrayChange");
  EXPECT_FALSE(Verified().IsSound());
  EXPECT_TRUE(Opens().rulesRestored);
  EXPECT_THROW(Executes("UPDATE TXray SET tXraySVolt = '1' WHERE tXrayCulIntIDPk = 2"), dao::EngineError);
  ExpectSound();
}

}  // namespace
}  // namespace varnlog::seals
