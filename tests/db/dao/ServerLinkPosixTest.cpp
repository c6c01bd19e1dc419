#include <chrono>

#include <gmock/gmock.h>

#include "db/dao/ServerLink.h"
#include "tests/db/dao/EngineFixture.h"
#include "tests/support/Environment.h"
#include "tests/support/PrivateServer.h"
#include "tests/support/SilentHost.h"
#include "tests/support/Table.h"

namespace varnlog::dao {
namespace {

using ::testing::HasSubstr;

class ServerLinkTest : public EngineTest {
 protected:
  ServerLinkTest() { server_.MakeLog(folder_ / "link"); }

  /// The link to the log with this in the place of one of its settings.
  [[nodiscard]] std::string With(const std::string& key, const std::string& value) const {
    std::string link = test::ReadFile(folder_ / "link");
    const std::size_t at = link.find("\n" + key + "=") + 1;
    return link.replace(at, link.find('\n', at) - at, key + "=" + value);
  }
  /// What opening it says: the error's number and its text.
  std::pair<ErrorNumber, std::string> Opens(const std::string& content, bool readOnly = false) {
    test::WriteFile(folder_ / "other", content);
    try {
      (void)workspace_->OpenDatabase(Path("other"), false, readOnly);
      return {kNone, ""};
    } catch (const EngineError& error) {
      return {error.number(), error.what()};
    }
  }

  test::PrivateServer& server_ = test::PrivateServer::Instance();
};

TEST_F(ServerLinkTest, SaysWhyALinkLeadsToNoLog) {
  server_.Asks("locked", "secret word");
  server_.Sql(
      "DROP DATABASE IF EXISTS latin; CREATE DATABASE latin ENCODING LATIN1 LOCALE 'C' TEMPLATE "
      "template0; CREATE SCHEMA IF NOT EXISTS foreign_one; CREATE TABLE IF NOT EXISTS "
      "foreign_one.varnlog_state (a text)");
  const std::string mark = "[VarnlogServer]\n";
  const std::string far = With("Host", "127.0.0.1") + "Port=1\n";
  for (const auto& [link, number, text] : Table<std::string, ErrorNumber, const char*>{
           {"", kUnrecognisedFormat, ""},
           {mark + std::string("Host=a\0b\n", 9), kUnrecognisedFormat, "line 2"},
           {std::string("\0\x01\x02[VarnlogServer]", 18), kUnrecognisedFormat, ""},
           {mark + "Hots=a\n", kUnrecognisedFormat, "unknown setting 'Hots'"},
           {mark + std::string(10'000'000, 'x'), kUnrecognisedFormat, "too long"},
           {mark + "Host=Pr\xE4xis\n", kUnrecognisedFormat, "UTF-8"},
           {"\xFF\xFE[\0V\0", kUnrecognisedFormat, ""},
           {With("User", "locked"), kBadAccount, "password"},
           {With("User", "it's \"nobody\" \\ "), kBadAccount, "it's \"nobody\" \\"},
           {With("Database", "no 'such\" \\one"), kServerDatabaseMissing, "no 'such\" \\one"},
           {With("Database", "latin"), kUnrecognisedFormat, "holds no log"},
           {With("Schema", "it's \"no\" \\log; DROP"), kUnrecognisedFormat, "it's \"no\" \\log"},
           {With("Schema", "pg_catalog"), kUnrecognisedFormat, "holds no log"},
           {With("Schema", "foreign_one"), kUnrecognisedFormat, "holds no log"},
           {far, kServerUnreachable, "127.0.0.1"}}) {
    const auto [error, why] = Opens(link);
    EXPECT_EQ(error, number) << link.substr(0, 200) << ": " << why;
    EXPECT_THAT(why, HasSubstr(text)) << link.substr(0, 200);
  }
  const std::filesystem::path passwords = folder_.Holding("passwords", "*:*:*:locked:wrong\n");
  std::filesystem::permissions(passwords, std::filesystem::perms::owner_read);
  test::SetVariable("PGPASSFILE", passwords.string());
  EXPECT_EQ(Opens(With("User", "locked")).first, kBadAccount);
  test::SetVariable("PGPASSFILE", "");
  test::PrivateServer::Damage(Path("link"), "UPDATE varnlog_state SET value = 2 WHERE name = 'layout'");
  EXPECT_THAT(Opens(test::ReadFile(folder_ / "link")),
              testing::Pair(kUnrecognisedFormat, HasSubstr("later version")));
}

TEST_F(ServerLinkTest, ASilentHostIsGivenUpAfterFiveSecondsOrWhenTold) {
  using Clock = std::chrono::steady_clock;
  const test::SilentHost host;
  const std::string link = With("Host", "127.0.0.1") + "Port=" + host.Port() + "\n";
  int asked = 0;
  auto last = Clock::now();
  auto longest = Clock::duration::zero();
  engine_.SetWaiting([&] {
    ++asked;
    longest = std::max(longest, Clock::now() - std::exchange(last, Clock::now()));
    return true;
  });
  const auto begin = Clock::now();
  EXPECT_THAT(Opens(link), testing::Pair(kServerUnreachable, HasSubstr("does not answer")));
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(4));
  EXPECT_LE(Clock::now() - begin, std::chrono::seconds(8));
  EXPECT_GE(asked, 40) << "so that a window stays alive";
  EXPECT_LE(longest, std::chrono::seconds(1));
  engine_.SetWaiting([&] { return --asked > 35; });
  EXPECT_EQ(Opens(link).first, kCancelled);
}

TEST_F(ServerLinkTest, AServerThatFollowsAnotherOneIsRead) {
  FillLog(*workspace_, *Open(Path("link")), 2);
  const test::PrivateServer follower(server_);
  test::WriteFile(folder_ / "follower", With("Host", follower.Folder()));
  const auto log = Open(Path("follower"));
  EXPECT_TRUE(log->IsReadOnly());
  EXPECT_EQ(log->OpenRecordset("TXray")->RecordCount(), 2);
  EXPECT_EQ(ErrorOf([&] { FillLog(*workspace_, *log, 1); }), kReadOnlyDatabase);
  EXPECT_EQ(ErrorOf([&] { log->Execute("CREATE TABLE x (a integer)"); }), kReadOnlyDatabase);
}

// The server's certificate is for localhost and of an authority of the test's own.
TEST_F(ServerLinkTest, ACertificateThatDoesNotFitKeepsTheConnectionFromBeingMade) {
  test::PrivateServer server;
  server.StartWithCertificate("localhost");
  const std::string link = "[VarnlogServer]\nHost=%\nPort=" + server.Port() +
                           "\nDatabase=postgres\nUser=postgres\nSslMode=verify-full\n";
  const std::string own = server.Folder() + "/ca.crt";
  for (const auto& [host, authority, number, text] :
       Table<const char*, std::string, ErrorNumber, const char*>{
           {"localhost", own, kUnrecognisedFormat, "holds no log"},
           {"127.0.0.1", own, kServerNotTrusted, "does not match host name"},
           {"localhost", server.Folder() + "/server.crt", kServerNotTrusted, "certificate verify failed"},
           {"localhost", "/nowhere", kServerNotTrusted, "does not exist"}}) {
    test::SetVariable("PGSSLROOTCERT", authority);
    std::string content = link;
    EXPECT_THAT(Opens(content.replace(content.find('%'), 1, host)), testing::Pair(number, HasSubstr(text)))
        << host << " " << authority;
  }
  test::SetVariable("PGSSLROOTCERT", "");
}

}  // namespace
}  // namespace varnlog::dao
