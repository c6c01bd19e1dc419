#include <string>

#include <gmock/gmock.h>

#include "db/dao/postgres/LinkFile.h"
#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string Link(const std::string& lines) {
  return std::string(kLinkMark) + "\r\n" + lines;
}

TEST(LinkFileTest, SaysWhereTheLogIsAndVerifiesOtherMachines) {
  const LinkFile far =
      ParseLinkFile(Link("; the practice\nhost = one.example , two.example\nPort=5433\nSchema=a\"b"), "l");
  EXPECT_THAT(far.hosts, ElementsAre("one.example", "two.example"));
  EXPECT_THAT(far.ports, ElementsAre("5433", "5433"));
  EXPECT_EQ(far.schema, "a\"b");
  EXPECT_EQ(far.sslMode, "verify-full");
  for (const char* here : {"", "Host=/run/postgresql", "Host=localhost,127.0.0.1,::1"})
    EXPECT_EQ(ParseLinkFile(Link(here), "l").sslMode, "prefer") << here;
  EXPECT_TRUE(IsLinkStart("\xEF\xBB\xBF[VarnlogServer]"));
  EXPECT_FALSE(IsLinkStart("[VarnlogServers]\n"));
}

TEST(LinkFileTest, RefusesWhatItDoesNotUnderstand) {
  const struct {
    std::string lines;
    const char* reason;
  } cases[] = {
      {"Host=a\nPasword=x", "unknown setting 'Pasword'"},
      {"Password=x", "line 2 holds a password"},
      {"Host=a\nHOST=b", "line 3 sets 'HOST' a second time"},
      {"nonsense", "line 2 is no setting"},
      {std::string("Host=a\0b", 8), "no text"},
      {"Host=\xFC", "no UTF-8"},
      {"Host=a,b,c\nPort=1,2", "ports do not fit"},
      {"Port=five", "ports do not fit"},
      {"Schema=" + std::string(51, 's'), "no usable name"},
      {"Host=elsewhere\nSslMode=require", "verify-full only"},
      {"Service=x\nSslMode=disable", "verify-full only"},
      {"SslMode=strong", "no protection"},
      {std::string(70'000, ';'), "too long"},
  };
  for (const auto& each : cases) {
    EXPECT_THAT(ErrorTextOf([&] { (void)ParseLinkFile(Link(each.lines), "l"); }), HasSubstr(each.reason))
        << each.lines.substr(0, 60);
  }
}

}  // namespace
}  // namespace varnlog::dao
