#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/Installation.h"
#include "tests/support/PrivateServer.h"

namespace varnlog::cli {
namespace {

using testing::HasSubstr;

class ServerCommandTest : public testing::Test {
 protected:
  ServerCommandTest() {
    Installation::Write(Path("link"), server_.Link("practice"));
    installation_.Reports({NewExposure("Weiß", "XI", "01.03.2004", "08:00:00"),
                           NewExposure("O'Neil", "XP", "01.03.2004", "08:05:00")});
    EXPECT_EQ(installation_.Ctl("update").status, 0);
  }
  ~ServerCommandTest() override { server_.Sql("DROP SCHEMA IF EXISTS practice CASCADE"); }

  [[nodiscard]] std::filesystem::path Path(const std::string& name) const {
    return installation_.suite() / name;
  }
  [[nodiscard]] Ended Server(const std::string& action, const std::string& file = {}) const {
    return installation_.Ctl("server " + action + " '" + Path("link").string() + "'" +
                             (file.empty() ? "" : " '" + Path(file).string() + "'"));
  }
  /// The rows of a log and the state of its seals.
  [[nodiscard]] std::string Content(const std::string& file) const {
    const std::string given = " --file '" + Path(file).string() + "'";
    return installation_.Ctl("list --format csv" + given).out +
           installation_.Ctl("history --format csv" + given).out + installation_.Ctl("verify" + given).out;
  }

  test::PrivateServer& server_ = test::PrivateServer::Instance();
  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(ServerCommandTest, ALogGoesToTheServerAndBackWithItsSeals) {
  const std::string before = Content("Data/Varnlog.mdb");
  ASSERT_EQ(Server("init").err, "");
  ASSERT_EQ(Server("init").status, 0);                         // again, which changes nothing
  EXPECT_EQ(Content("link").find("Weiß"), std::string::npos);  // opening it begins its chain of seals
  EXPECT_THAT(Server("adopt", "Data/Varnlog.mdb").out, HasSubstr("exposures 2, entries 0, values compared "));
  EXPECT_EQ(Content("link"), before);
  EXPECT_EQ(Server("adopt", "Data/Varnlog.mdb").status, 1);
  EXPECT_THAT(Server("check").out, HasSubstr("\nok\n"));
  EXPECT_EQ(Server("export", "back.mdb").err, "");
  EXPECT_EQ(Content("back.mdb"), before);
  EXPECT_EQ(Server("export", "back.mdb").status, 1);
  EXPECT_EQ(Content("back.mdb"), before);
  const std::string copy = installation_
                               .Ctl("backup --file '" + Path("back.mdb").string() + "' --to '" +
                                    installation_.suite().string() + "'")
                               .out;
  ASSERT_THAT(copy, HasSubstr("\n"));
  EXPECT_THAT(installation_
                  .Ctl("restore --yes --file '" + Path("link").string() + "' '" +
                       copy.substr(0, copy.find('\n')) + "'")
                  .err,
              HasSubstr("3219"));
  EXPECT_EQ(test::ReadFile(Path("link")), server_.Link("practice")) << "no file in its place";
}

TEST_F(ServerCommandTest, WhereverItIsKilledALogIsTakenOverWhollyOrNotAtAll) {
  std::vector<tools::Exposure> more;
  for (int i = 0; i < 300; ++i)
    more.push_back(NewExposure("Patient " + std::to_string(i), "XI", "02.03.2004", "08:00:00"));
  installation_.Reports(more);
  ASSERT_EQ(installation_.Ctl("update").status, 0);
  const std::string before = Content("Data/Varnlog.mdb");
  ASSERT_EQ(Server("init").status, 0);
  const std::string adopt = installation_.CtlCommand() + " server adopt '" + Path("link").string() + "' '" +
                            installation_.log().string() + "'";
  // What is left half would be refused the next time.
  constexpr int kKilled = 128 + 9;
  int kills = -1;
  int status = kKilled;
  for (int milliseconds = 10; status == kKilled; milliseconds += 10, ++kills) {
    status =
        installation_.Shell("timeout -s KILL " + std::to_string(milliseconds / 1000.0) + " " + adopt).status;
    server_.Sql(
        "DO $$ BEGIN IF EXISTS (SELECT FROM pg_trigger t JOIN pg_class c ON c.oid = tgrelid WHERE "
        "relnamespace = 'practice'::regnamespace AND NOT tgisinternal AND tgenabled NOT IN ('O', 'A')) "
        "THEN RAISE 'rules are off'; END IF; END $$");
  }
  EXPECT_GT(kills, 3);
  EXPECT_EQ(Content("link"), before);
  EXPECT_THAT(Server("check").out, HasSubstr("\nok\n"));
}

TEST_F(ServerCommandTest, AnAccountOfTheProgramTakesExposuresInAndNothingElse) {
  ASSERT_EQ(Server("init").status, 0);
  server_.Sql("DROP ROLE IF EXISTS maria; CREATE ROLE maria LOGIN; GRANT practice_program TO maria");
  std::string link = server_.Link("practice");
  Installation::Write(Path("link"), link.replace(link.find("User=postgres"), 13, "User=maria"));
  EXPECT_EQ(Server("adopt", "Data/Varnlog.mdb").status, 1);
  std::filesystem::copy_file(Path("link"), installation_.log(),
                             std::filesystem::copy_options::overwrite_existing);
  installation_.Reports({NewExposure("Müller", "XI", "02.03.2004", "08:00:00")});
  EXPECT_THAT(installation_.Ctl("update").out, HasSubstr("added 1"));
  EXPECT_THAT(installation_.Ctl("verify").out, HasSubstr("sealed: 1 exposures"));
  EXPECT_THROW(server_.Sql("SET ROLE maria; ALTER TABLE practice.\"TXray\" DISABLE TRIGGER USER"),
               std::exception);
  EXPECT_THROW(server_.Sql("SET ROLE maria; DELETE FROM practice.\"TXray\""), std::exception);
  // What its owner takes away is missed.
  server_.Sql("ALTER TABLE practice.\"TXray\" DISABLE TRIGGER USER");
  EXPECT_EQ(installation_.Ctl("verify").status, 1);
  EXPECT_THAT(installation_.Ctl("compact").err, HasSubstr("3219"));
}

}  // namespace
}  // namespace varnlog::cli
