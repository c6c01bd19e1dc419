#include <QTreeWidget>

#include "tests/windows/MainWindow.h"
#include "ui/FileDialog.h"

// Names, settings and other workstations as a program meets them in practices.

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;
using enum CommandId;

class RoughUse : public MainWindow {
 protected:
  void Starts(core::MessageAnswer answer = core::MessageAnswer::kYes) {
    MainWindow::Starts(answer);
    started_ = TakeMessages();
  }
  /// Starts while the file dialog gives this.
  void StartsChoosing(const std::optional<std::string>& file, core::MessageAnswer answer) {
    program_.reset();
    ui::CFileDialog::AnswerWith([file](const ui::CFileDialog&) { return file; });
    Starts(answer);
    ui::CFileDialog::AnswerWith({});
  }
  void Ini(const std::string& lines) {
    cli::Installation::Write(installation_.program() / "varnlog.ini", lines);
  }

  QStringList started_;
};

TEST_F(RoughUse, AnotherWorkstationsWorkShowsWhenAValueIsEntered) {
  Starts();
  const auto entering = [this](int row, int column, const char* text) {
    (void)TakeMessages();
    Enters(row, column, text);
    return TakeMessages().join('|').toStdString();
  };
  const std::string inUse = Text("RS_ERR_RECORDEX"_key).toStdString();
  installation_.DamagesLog(
      "UPDATE TXray SET tXraySVolt = '71' WHERE tXraySType = 'XC'; "
      "DELETE FROM TXray WHERE tXraySName = 'O''Hara'");
  // The first row was corrected meanwhile, and the newer value has not been seen here.
  EXPECT_EQ(entering(0, kVoltageColumn, "65"), inUse);
  EXPECT_EQ(Stored("tXraySVolt"), Grid().CellText(0, kVoltageColumn).toStdString());
  EXPECT_EQ(entering(1, kVoltageColumn, "66"), Text("RS_ERR_RECDEL"_key).toStdString());

  EXPECT_TRUE(entering(0, logview::kCommentColumn, "frei").empty());
  EXPECT_EQ(Stored("tXraySComment"), "frei");
  Triggers(mnuViewLoad);
  EXPECT_EQ(Patients(), Names({"Abel", "Abel", "Zander"}));
}

TEST_F(RoughUse, NamesOfEveryKindAreShownFoundAndSelected) {
  const std::string wide = "WWWWWWWWWWWWWWWWWWWWWWWWWWWWWWWW";
  Starts();
  const std::vector<std::string> names = {"100% - [echt]", "Weiß_Ö?",    "{dao.x}", "\"Rex\"",
                                          "Ünal; -- x",    "#1 & Söhne", wide,      "אבג"};
  int number = 100;
  for (const std::string& name : names)
    installation_.DamagesLog(
        "INSERT INTO TXray (tXrayCulIntIDPk, tXraySName, tXraySFirstname, tXrayDBirthday, tXrayTs) VALUES (" +
        std::to_string(++number) + ", '" + name +
        "', 'Käthe', '1960-02-01 00:00:00', '2023-01-01 08:00:00')");
  Triggers(mnuSortAll);
  for (const std::string& name : names) {
    EXPECT_TRUE(std::ranges::count(Patients(), name) == 1) << name;
    InDialog("frmPatSearch", [&](QDialog& dialog) {
      // Brackets and the like are wildcards of the search; the list below shows everybody.
      Child<QLineEdit>(dialog, "txtSearch").setText("*");
      Child<QPushButton>(dialog, "cmdSearch").click();
      auto& list = Child<QTreeWidget>(dialog, "lvwPat");
      for (int i = 0; i < list.topLevelItemCount(); ++i) {
        QTreeWidgetItem* entry = list.topLevelItem(i);
        if (!entry->text(0).startsWith(QString::fromStdString(name) + ",")) continue;
        list.setCurrentItem(entry);
        emit list.itemClicked(entry, 0);
      }
      Child<QPushButton>(dialog, "cmdOK").click();
      if (dialog.isVisible()) Cancels(dialog);
    });
    Triggers(mnuSortPatAll);
    EXPECT_EQ(Globals().strPatNameGl, name);
    EXPECT_EQ(Patients(), Names({name}));
    EXPECT_TRUE(Window().windowTitle().contains(QString::fromStdString(name)));
    EXPECT_NE(Window().Results()->Headline().find(name), std::string::npos) << "the report's title";
    EXPECT_TRUE(TakeMessages().isEmpty()) << name;
    Triggers(mnuSortAll);
  }
}

TEST_F(RoughUse, AnApostropheInASelectedNameIsToldAndNothingElseHappens) {
  Ini("[" + installation_.log().string() +
      "]\nSortSelectionGl=2\nName=O'Hara\nFirstName=Käthe\nBirth=19600201\n"
      "[User]\nDataFile=" +
      installation_.log().string() + "\n");
  installation_.MakeLog();
  Starts();
  EXPECT_EQ(started_.size(), 3) << started_.join("\n--\n").toStdString();
  EXPECT_EQ(started_.last(), "3075: " + Text("GL_ERR_3075"_key)) << "in the user's language";
  EXPECT_EQ(Grid().ApproximateCount(), 0);
  Triggers(mnuSortAll);
  EXPECT_EQ(Grid().ApproximateCount(), 4);
}

TEST_F(RoughUse, SettingsOutOfAllBoundsStillShowAWindow) {
  const char* const rows[] = {
      "[Form Positions]\nfrmMDIMain=L=99999;T=-99999;W=0;H=1000000;S=0\n",
      "[Form Positions]\nfrmMDIMain=L=-99999;T=99999;W=1000000;H=0;S=0\n",
      "[Form Positions]\nfrmMDIMain=L=a;T=;W=-5;H=99999999999999999999;S=9\n",
      "[GridColumns]\nWidths=W0=0;W1=1000000;W2=-7;W3=99999999999999999999;W4=x;W99=5;\n",
      "[GridColors]\nLockedBackColor=R=999;G=-1;B=x\nEditForeColor=\n",
      "[User]\nOptTbrVisible=yes\nDataFile=/nirgends/kein.mdb\n[App]\nLanguage=XX\n",
      "[User\n=\n\x01\x02\xff\xfe[[[]]]\n;\n",
  };
  for (const char* ini : rows) {
    Ini(ini);
    Starts();
    frmMDIMain& window = Window();
    EXPECT_TRUE(window.screen()->availableGeometry().contains(QRect(window.pos(), window.size()))) << ini;
    EXPECT_GT(window.centralWidget()->height(), 0) << ini;
    EXPECT_EQ(Grid().ApproximateCount(), 4) << ini;
    for (int column = 0; column < logview::kColumnCount; ++column) {
      const int width = Grid().ColumnWidth(column);
      EXPECT_TRUE(width >= ui::TDBGrid::kNarrowest && width <= ui::TDBGrid::kWidest) << ini << column;
    }
    window.grab();
    EXPECT_TRUE(Quits()) << ini;
  }
}

TEST_F(RoughUse, ALogThatVanishedBetweenTwoStartsGivesWayToTheOneOfTheSuite) {
  Starts();
  const fs::path other = installation_.suite() / "anderes.mdb";
  fs::copy_file(installation_.log(), other);
  ui::CFileDialog::AnswerWith([&](const ui::CFileDialog&) { return std::optional(other.string()); });
  Triggers(mnuFileOpen);
  ui::CFileDialog::AnswerWith({});
  ASSERT_EQ(Globals().strDataFileGl, other.string());
  program_.reset();
  const fs::path gone = installation_.suite() / "anderes.mdb.weg";
  fs::rename(other, gone);
  Starts(core::MessageAnswer::kGoOn);
  ASSERT_EQ(started_.size(), 1);
  EXPECT_TRUE(started_.at(0).contains("anderes.mdb")) << started_.at(0).toStdString();
  EXPECT_TRUE(started_.at(0).contains("Varnlog.mdb")) << started_.at(0).toStdString();
  EXPECT_EQ(Globals().strDataFileGl, installation_.log().string());
  EXPECT_EQ(Grid().ApproximateCount(), 4);
  program_.reset();
  fs::rename(gone, other);
  Starts();
  EXPECT_EQ(Globals().strDataFileGl, other.string()) << "it stayed configured";
  EXPECT_TRUE(started_.isEmpty()) << started_.join('\n').toStdString();

  // Another one is chosen instead.
  program_.reset();
  fs::remove(other);
  StartsChoosing(installation_.log().string(), core::MessageAnswer::kOpen);
  EXPECT_EQ(started_.size(), 1);
  program_.reset();
  Starts();
  EXPECT_TRUE(started_.isEmpty()) << started_.join('\n').toStdString();

  // Nowhere to put a new one: told, and another can be chosen.
  program_.reset();
  fs::remove(installation_.log());
  fs::remove(installation_.program() / "varnlog.md0");
  StartsChoosing(std::nullopt, core::MessageAnswer::kYes);
  ASSERT_EQ(started_.size(), 3);
  for (const QString& message : started_) EXPECT_TRUE(message.contains("Varnlog.mdb"));
  EXPECT_EQ(Window().Results(), nullptr);
}

}  // namespace
}  // namespace varnlog::app::test
