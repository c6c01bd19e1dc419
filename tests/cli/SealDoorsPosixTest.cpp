#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Any program that can open the file: here Python's, which knows nothing of the log. Exposure 1 has an open
/// voltage, exposure 2 none.
class SealDoorsTest : public testing::Test {
 protected:
  void SetUp() override {
    tools::Exposure open = NewExposure("Zander", "XI", "03.02.2020", "08:00:00");
    open.volt.clear();
    installation_.Reports({open, NewExposure("Abel", "XP", "04.02.2020", "09:00:00")});
    ASSERT_EQ(installation_.Ctl("update").status, 0);
  }

  /// `log` is the open file, `fields` are those of the exposures; what is printed.
  std::string OtherProgram(const std::string& script) {
    const fs::path file = installation_.suite() / "other.py";
    Installation::Write(file,
                        "import sqlite3, sys\nlog = sqlite3.connect(sys.argv[1], isolation_level=None)\n"
                        "fields = [row[1] for row in log.execute('PRAGMA table_info(TXray)')]\n" +
                            script);
    const Ended ended =
        installation_.Shell("python3 '" + file.string() + "' '" + installation_.log().string() + "'");
    EXPECT_EQ(ended.status, 0) << ended.err;
    return ended.out;
  }
  std::string Verified() { return installation_.Ctl("verify").out; }

  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(SealDoorsTest, AnotherProgramChangesNoFieldWithoutARecordOfIt) {
  const std::string before = Verified();
  const std::string changed = OtherProgram(R"py(
tries = ["UPDATE TXray SET %s = %s WHERE tXrayCulIntIDPk = %d" % (field, value, row)
         for field in fields for value in ("'7'", "NULL", "1", "0") for row in (1, 2)]
tries += ["DELETE FROM TXray", "DELETE FROM THistory", "DELETE FROM TSeal WHERE tSealCulNrPk = 1",
          "INSERT OR REPLACE INTO TXray (tXrayCulIntIDPk) VALUES (1)", "UPDATE TSeal SET tSealSAccount = 'x'"]
for statement in tries:
  was = list(log.execute("SELECT * FROM TXray")), list(log.execute("SELECT * FROM TSeal"))
  try: log.execute(statement)
  except sqlite3.Error: pass
  if was != (list(log.execute("SELECT * FROM TXray")), list(log.execute("SELECT * FROM TSeal"))): print(statement)
)py");
  EXPECT_EQ(changed, "");
  EXPECT_EQ(Verified(), before);
}

TEST_F(SealDoorsTest, AnHonestProgramEntersWhatIsOpenAndIsSealedNextTime) {
  const std::string enter = R"py(
def enter(row, field, value):
  old = log.execute("SELECT %s FROM TXray WHERE tXrayCulIntIDPk = %d" % (field, row)).fetchone()[0]
  log.execute("BEGIN")
  log.execute("INSERT INTO THistory (tXrayCulIntIDPk, tHistSField, tHistSOld, tHistSNew, tHistSKind, tHistNSeal) "
              "SELECT ?, ?, ?, ?, 'entry', max(tSealCulNrPk) + 1 FROM TSeal", (row, field, old, value))
  try:
    log.execute("UPDATE TXray SET %s = ? WHERE tXrayCulIntIDPk = %d" % (field, row), (value,))
    log.execute("COMMIT")
    print(row, field)
  except sqlite3.Error: log.execute("ROLLBACK")
for row in (1, 2):
  for field in fields: enter(row, field, '0' if 'BEd' in field else '63')
)py";
  // The open value, and whatever else stands open; the comment; locking what is open.
  const std::string entered = OtherProgram(enter);
  EXPECT_THAT(entered, HasSubstr("1 tXraySVolt\n1 tXrayBEdVolt\n"));
  EXPECT_THAT(entered, HasSubstr("1 tXraySComment"));
  EXPECT_THAT(entered, testing::Not(HasSubstr("2 tXraySVolt")));
  for (const char* field : {"Name", "Firstname", "Birthday", "SSex", "XrayTs", "IDPk", "2 tXraySDr\n"})
    EXPECT_THAT(entered, testing::Not(HasSubstr(field)));
  EXPECT_EQ(installation_.Ctl("verify").status, 1) << "no seal yet";
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  const Ended verified = installation_.Ctl("verify");
  EXPECT_EQ(verified.status, 0) << verified.out;
  EXPECT_THAT(verified.out, HasSubstr("ohne Siegel vorgefunden"));
}

TEST_F(SealDoorsTest, LogsOfEveryOriginVerify) {
  const fs::path made = installation_.suite() / "Data" / "Neu.mdb";
  for (const char* sample : {"log-1.0-jet3-cp1252.mdb", "log-1.1-jet4-scratch.mdb"}) {
    const std::string old = (fs::path(VARNLOG_SOURCE_DIR) / "tests/data/jet" / sample).string();
    ASSERT_EQ(installation_.Ctl("convert --overwrite '" + old + "' '" + made.string() + "'").status, 0)
        << sample;
    EXPECT_EQ(installation_.Ctl("verify --file '" + made.string() + "'").status, 0) << sample;
    EXPECT_THAT(installation_.Ctl("history --format csv --file '" + made.string() + "'").out,
                HasSubstr("conversion"));
  }
  // One that was made before there were seals.
  installation_.WithLog(false, [](dao::Database& log) {
    for (const std::string rule : {"rXrayDelete", "rXrayReplace", "rXrayIdentity", "rXrayChange"})
      log.Execute("DROP TRIGGER " + rule);
    log.Execute("DROP TABLE THistory; DROP TABLE TSeal");
  });
  EXPECT_EQ(installation_.Ctl("verify").status, 1);
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  EXPECT_THAT(Verified(), HasSubstr("sealed: 2 exposures, 0 entries, 1 seals"));
}

}  // namespace
}  // namespace varnlog::cli
