#include "logview/RowDisplay.h"
#include "tests/logview/LogFixture.h"

namespace varnlog::logview {
namespace {

class RowDisplayTest : public LogFixture {
 protected:
  std::vector<std::string> Shown(dao::Recordset& rows, const intake::ToothScheme& scheme) {
    const RowDisplay display(rows, texts_, scheme, platform::ShortDate());
    std::vector<std::string> texts;
    for (int column = 0; column < kColumnCount; ++column) texts.push_back(display.Text(column));
    return texts;
  }
};

TEST_F(RowDisplayTest, ShowsARowInThirteenColumns) {
  TakesExposure({});
  TakesExposure({{"tXraySName", "Müller"},
                 {"tXraySFirstname", "Käthe"},
                 {"tXrayDBirthday", "1960-02-01"},
                 {"tXraySPreg", "N"},
                 {"tXrayTs", "2004-02-09 14:35:07"},
                 {"tXraySDr", "Dr. Weiß"},
                 {"tXraySType", "XI"},
                 {"tXraySDiagRetry", "N.d."},
                 {"tXraySRegio", "48"},
                 {"tXraySRadDur", "120"},
                 {"tXraySVolt", "60"},
                 {"tXraySCur", "7"},
                 {"tXraySDose", "3.4"},
                 {"tXraySComment", "unscharf"}});
  const auto rows = Rows();
  EXPECT_EQ(Shown(*rows, fdi_),
            (std::vector<std::string>{"1", "", ",  *", "", "", "", "", "", "", "", "", "", ""}));
  rows->MoveNext();
  EXPECT_EQ(Shown(*rows, fdi_), (std::vector<std::string>{"2", "09.02.2004", "Müller, Käthe *01.02.1960",
                                                          "nein", "XI", "48", "120", "60", "7", "3.4",
                                                          "nicht diagnostisch", "Dr. Weiß", "unscharf"}));
  EXPECT_EQ(Shown(*rows, us_).at(kRegionColumn), "32");
}

TEST_F(RowDisplayTest, WithoutATypeTheRegionStaysEmpty) {
  TakesExposure({{"tXraySRegio", "48"}});
  EXPECT_EQ(Shown(*Rows(), fdi_).at(kRegionColumn), "");
}

}  // namespace
}  // namespace varnlog::logview
