#ifdef VARNLOG_HAS_REPORT

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"
#include "tests/support/Table.h"
#include "tests/support/TestFolder.h"
#include "tools/exchange/ExposureGenerator.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

std::vector<std::string> PdfPages(const fs::path& pdf, const Installation& shell) {
  std::istringstream text(shell.Shell("pdftotext -layout -enc UTF-8 '" + pdf.string() + "' -").out);
  std::vector<std::string> pages;
  for (std::string page; std::getline(text, page, '\f');) pages.push_back(page);
  return pages;
}

class ReportTest : public testing::Test {
 protected:
  ReportTest() : installation_("report") { installation_.MakeLog(); }

  void Logs(std::int64_t count) {
    tools::GeneratorOptions options;
    options.count = count;
    options.invalidPercent = 0;
    tools::ExposureGenerator generator(options);
    std::vector<tools::Exposure> exposures;
    for (std::int64_t i = 0; i < count; ++i) exposures.push_back(generator.Next());
    installation_.Reports(exposures);
    EXPECT_EQ(installation_.Ctl("update").status, 0);
  }

  [[nodiscard]] fs::path Pdf() const { return installation_.suite() / "bericht ü.pdf"; }
  [[nodiscard]] Ended Report(const std::string& selection) const {
    return installation_.Ctl("report " + selection + " --output '" + Pdf().string() + "'");
  }

  /// Every line of the list stands in the report, in the same order and with the same values.
  void ExpectSameAsList(const std::string& selection) {
    ASSERT_EQ(Report(selection).status, 0);
    const std::string files = installation_.suite().string() + "/shown' '" + installation_.suite().string() +
                              "/stored' '" + installation_.suite().string() + "/text'";
    Installation::Write(installation_.suite() / "shown",
                        installation_.Ctl("list --display --format csv " + selection).out);
    Installation::Write(installation_.suite() / "stored",
                        installation_.Ctl("list --format csv " + selection).out);
    ASSERT_EQ(installation_
                  .Shell("pdftotext -layout -enc UTF-8 '" + Pdf().string() + "' '" +
                         (installation_.suite() / "text").string() + "'")
                  .status,
              0);
    const Ended compared = installation_.Shell(
        "PATH=/usr/bin:$PATH python3 " VARNLOG_SOURCE_DIR "/tests/cli/compare_report.py '" + files);
    EXPECT_EQ(compared.status, 0) << selection << compared.err;
  }

  Installation installation_;
};

TEST_F(ReportTest, ShowsRowByRowWhatTheListShows) {
  Logs(300);
  installation_.DamagesLog(
      "UPDATE TXray SET tXraySComment = 'gut (\"Zitat\", {dao.x}; 100%)' WHERE tXrayCulIntIDPk % 7 = 0");
  installation_.DamagesLog(
      "UPDATE TXray SET tXraySComment = 'eine lange Bemerkung mit' || char(13) || char(10) || "
      "'Zeilenwechsel, die nicht in eine Zeile passt' WHERE tXrayCulIntIDPk % 11 = 0");
  installation_.DamagesLog(
      "UPDATE TXray SET tXraySPreg = 'J', tXraySDiagRetry = 'Wdh.' WHERE tXrayCulIntIDPk % 13 = 0");
  installation_.DamagesLog("UPDATE TXray SET tXrayTs = '2015-01-20 00:00:00' WHERE tXrayCulIntIDPk = 100");
  for (const char* selection :
       {"", "--from 05.01.2015 --to 15.01.2015", "--from 1.1.2015 --to 31.12.2015 --type XP"})
    ExpectSameAsList(selection);
}

TEST_F(ReportTest, APdfHasATitleItsFontsAndAFooterOnEachPage) {
  Logs(200);
  ASSERT_EQ(Report("").status, 0);
  const std::string quoted = " '" + Pdf().string() + "'";
  EXPECT_THAT(installation_.Shell("pdfinfo" + quoted).out,
              HasSubstr("Röntgenkontrollbuch: alle Patienten, alle Bilder"));
  const std::string fonts = installation_.Shell("pdffonts" + quoted).out;
  EXPECT_THAT(fonts, HasSubstr(" yes "));
  EXPECT_THAT(fonts, testing::Not(HasSubstr(" no  no")));
  const std::string pdf = test::ReadFile(Pdf());
  const std::string table = pdf.substr(std::stoul(pdf.substr(pdf.rfind("startxref") + 10)));
  const std::string catalog = pdf.substr(std::stoul(table.substr(table.find('\n', 5) + 1)));
  EXPECT_THAT(catalog.substr(0, catalog.find("endobj")),
              testing::AllOf(HasSubstr("/Catalog"), HasSubstr("/Lang (de)")));
  const std::vector<std::string> pages = PdfPages(Pdf(), installation_);
  ASSERT_GT(pages.size(), 2U);
  for (std::size_t i = 0; i < pages.size(); ++i) {
    const std::string number = "Seite " + std::to_string(i + 1) + " von " + std::to_string(pages.size());
    for (const std::string& text :
         {std::string("Praxis Dr. Weiß"), std::string("Bemerkung"), std::string("Gedruckt: "), number})
      EXPECT_THAT(pages[i], HasSubstr(text));
  }
}

TEST_F(ReportTest, EndsWithTheStateOfTheLogToBeReadAndScanned) {
  Logs(30);
  ASSERT_EQ(Report("--from 05.01.2015 --to 05.01.2015").status, 0);
  const std::string image = (installation_.suite() / "seite").string();
  ASSERT_EQ(
      installation_.Shell("pdftoppm -r 150 -png -singlefile '" + Pdf().string() + "' '" + image + "'").status,
      0);
  std::string scanned = installation_.Shell("zbarimg -q --raw '" + image + ".png'").out;
  ASSERT_FALSE(scanned.empty());
  scanned.pop_back();
  const std::string page = PdfPages(Pdf(), installation_).back();
  EXPECT_THAT(page, HasSubstr(scanned));
  EXPECT_THAT(page, HasSubstr("Aufnahmen im ganzen Röntgenkontrollbuch: 30."));
  EXPECT_EQ(installation_.Ctl("verify --anchor '" + scanned + "'").status, 0);
  EXPECT_EQ(installation_.Ctl("verify --anchor '" + scanned.replace(2, 1, "?") + "'").status, 2);
  EXPECT_EQ(installation_.Ctl("verify --anchor 1-" + std::string(64, '0')).status, 1);
}

TEST_F(ReportTest, ListsWhatWasEnteredLaterOnDemand) {
  Logs(30);
  installation_.DamagesLog(
      "INSERT INTO THistory (tHistCulNrPk, tXrayCulIntIDPk, tHistSField, tHistSNew, tHistSKind, tHistNSeal) "
      "SELECT 1, 7, 'tXraySComment', 'nachgetragen', 'comment', max(tSealCulNrPk) + 1 FROM TSeal;"
      "UPDATE TXray SET tXraySComment = 'nachgetragen' WHERE tXrayCulIntIDPk = 7");
  ASSERT_EQ(Report("").status, 0);
  EXPECT_THAT(PdfPages(Pdf(), installation_)[0], testing::Not(HasSubstr("Geändert: Bemerkung")));
  ASSERT_EQ(Report("--with-entries").status, 0);
  EXPECT_THAT(PdfPages(Pdf(), installation_)[0], HasSubstr("Geändert: Bemerkung: – → nachgetragen"));
}

TEST_F(ReportTest, AnEmptySelectionSaysSoInItsLanguage) {
  for (const auto& [language, text] :
       {std::pair{"D", "gibt es keine Aufnahmen"}, {"CYR", "нет снимков"}, {"F", "Il n’y a aucune"}}) {
    installation_.SetLanguage(language);
    ASSERT_EQ(Report("").status, 0) << language;
    const std::vector<std::string> pages = PdfPages(Pdf(), installation_);
    ASSERT_EQ(pages.size(), 1U);
    for (const char* shown : {text, "mGy * cm 2", "Praxis Dr. Weiß"}) EXPECT_THAT(pages[0], HasSubstr(shown));
  }
}

TEST_F(ReportTest, DatesAndPaperFollowTheUsersLocale) {
  installation_.Reports({NewExposure("Muster", "XI", "02.03.2020", "08:00:00")});
  ASSERT_EQ(installation_.Ctl("update").status, 0);
  const Table<const char*, const char*, const char*, const char*> rows = {
      {"de_DE.UTF-8", "02.03.2020 08:00:00", "Muster, Käthe *1.2.1960", "(A4)"},
      {"en_US.UTF-8", "3/2/2020 08:00:00", "Muster, Käthe *2/1/1960", "(letter)"},
      {"sv_SE.UTF-8", "2020-03-02 08:00:00", "Muster, Käthe *1960-2-1", "(A4)"},
      {"C", "02.03.2020 08:00:00", "Muster, Käthe *1.2.1960", "(A4)"}};
  for (const auto& [locale, taken, patient, paper] : rows) {
    const Ended ended =
        installation_.Shell("LC_ALL=" + std::string(locale) + " " + installation_.CtlCommand() +
                            " report --output '" + Pdf().string() + "'");
    ASSERT_EQ(ended.status, 0) << locale << ended.err;
    const std::vector<std::string> pages = PdfPages(Pdf(), installation_);
    ASSERT_EQ(pages.size(), 1U) << locale;
    EXPECT_THAT(pages[0], HasSubstr(taken)) << locale;
    EXPECT_THAT(pages[0], HasSubstr(patient)) << locale;
    EXPECT_THAT(installation_.Shell("pdfinfo '" + Pdf().string() + "'").out, HasSubstr(paper)) << locale;
  }
}

TEST_F(ReportTest, WithoutItsTextsItStillPrintsTheRows) {
  Logs(5);
  dao::DBEngine engine;
  engine.SetSystemDB((installation_.program() / "system.mdw").string());
  const auto workspace = engine.CreateWorkspace("Other", "Admin", "");
  const auto texts =
      workspace->OpenDatabase((installation_.program() / "verbalo.mdb").string(), false, false);
  texts->Execute("DELETE FROM TRes WHERE TResSTextKey <> 'RS_HEADLINE'");
  texts->Close();
  const Ended ended = Report("");
  ASSERT_EQ(ended.status, 0) << ended.err;
  EXPECT_THAT(PdfPages(Pdf(), installation_).at(0), HasSubstr("05.01.2015 08:"));
}

TEST_F(ReportTest, NeedsNeitherDisplayNorHome) {
  const Ended ended =
      installation_.Shell("env -i QT_QPA_PLATFORM=xcb DISPLAY=:77 " + installation_.CtlCommand() +
                          " report --output '" + Pdf().string() + "'");
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(PdfPages(Pdf(), installation_).size(), 1U);
}

TEST_F(ReportTest, AFailureLeavesTheOldFileAndSaysWhy) {
  Logs(300);
  Installation::Write(Pdf(), "the old report");
  const std::string target = Pdf().string();
  const fs::path link = installation_.suite() / "verweis.pdf";
  fs::create_symlink(Pdf(), link);
  const Table<const char*, std::string, std::string> rows = {
      {"no such folder", "", installation_.suite().string() + "/nowhere/a.pdf"},
      {"a folder", "", installation_.suite().string()},
      {"a device", "", "/dev/null"},
      {"a link, which somebody else may have made", "", link.string()},
      // What a full disk does, for a file of more than a few kilobytes.
      {"no room", "trap '' XFSZ; ulimit -f 8; ", target}};
  for (const auto& [why, before, output] : rows) {
    std::string command = before;
    command.append(installation_.CtlCommand()).append(" report --output '").append(output).append("'");
    const Ended ended = installation_.Shell(command);
    EXPECT_EQ(ended.status, 1) << why;
    EXPECT_THAT(ended.err, HasSubstr("Der Bericht konnte nicht gespeichert werden: " + output)) << why;
  }
  EXPECT_EQ(test::ReadFile(Pdf()), "the old report");
  EXPECT_FALSE(fs::is_regular_file("/dev/null"));
  for (const auto& entry : fs::directory_iterator(installation_.suite()))
    EXPECT_TRUE(entry.path() == Pdf() ||
                entry.path().filename().string().find("bericht") == std::string::npos)
        << entry.path() << " was left behind";
}

TEST_F(ReportTest, IsForThoseWhoMayReadTheLog) {
  for (const unsigned mode : {0600U, 0640U}) {
    fs::permissions(installation_.log(), fs::perms(mode));
    EXPECT_EQ(Report("").status, 0);
    EXPECT_EQ(fs::status(Pdf()).permissions(), fs::perms(mode));
  }
}

TEST_F(ReportTest, SweepsDraftsThatWereNeverFinished) {
  const auto beside = [this](const char* ending) { return fs::path(Pdf()) += ending; };
  const auto files = {std::pair{".QxYzAb", "%PDF-1.4 cut off"},
                      {".backup", "%PDF-1.4 whole\n%%EOF\n"},
                      {".umsatz", "another"}};
  for (const auto& [ending, content] : files) {
    Installation::Write(beside(ending), content);
    fs::last_write_time(beside(ending), fs::file_time_type::clock::now() - std::chrono::hours(25));
  }
  EXPECT_EQ(Report("").status, 0);
  EXPECT_FALSE(fs::exists(beside(".QxYzAb")));
  EXPECT_TRUE(fs::exists(beside(".backup")) && fs::exists(beside(".umsatz")));
}

}  // namespace
}  // namespace varnlog::cli

#endif
