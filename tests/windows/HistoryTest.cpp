#include <QPlainTextEdit>
#include <QTreeWidget>

#include "tests/windows/MainWindow.h"
#include "ui/QtText.h"

namespace varnlog::app::test {
namespace {

/// "what: before -> after" of each row of the pane.
Names Shown(frmMDIMain& window) {
  RunningProgram::Settle();
  const auto& list = Child<QTreeWidget>(window, "lvwHistory");
  Names rows;
  for (int i = 0; i < list.topLevelItemCount(); ++i) {
    const QTreeWidgetItem& row = *list.topLevelItem(i);
    EXPECT_FALSE(row.text(0).isEmpty() || row.text(1).isEmpty() || row.text(2).isEmpty())
        << "who, when, where";
    rows.push_back((row.text(3) + "|" + row.text(4) + "|" + row.text(5)).toStdString());
  }
  return rows;
}

using HistoryTest = MainWindow;

TEST_F(HistoryTest, ThePaneFollowsTheRowAndShowsWhatBecameOfIt) {
  Starts();
  Triggers(CommandId::mnuViewHistory);
  const std::string origin = "Aus Kalvero übernommen||";
  EXPECT_EQ(Shown(Window()), Names{origin});
  Enters(1, kVoltageColumn, "63");
  Enters(1, kVoltageColumn, "64");
  Enters(1, logview::kCommentColumn, "o. B.");
  const Names history = {origin, "Berichtigt: kV|60|63", "Berichtigt: kV|63|64",
                         "Geändert: Bemerkung|–|o. B."};
  EXPECT_EQ(Shown(Window()), history);
  program_->ClicksCell(2, 0);
  EXPECT_EQ(Shown(Window()), Names{origin}) << "of another row";
  ClicksHeading(logview::kPatientColumn);
  program_->ClicksCell(2, 0);
  EXPECT_EQ(Shown(Window()), history) << "the same exposure in another order";
  EXPECT_TRUE(Quits());

  Starts();
  EXPECT_TRUE(Globals().OptHistoryVisible);
  program_->ClicksCell(1, 0);
  EXPECT_EQ(Shown(Window()).back(), "Gesperrt: kV|offen|gesperrt");
}

TEST_F(HistoryTest, ACellThatWasChangedIsMarkedAndSaysByWhom) {
  Starts();
  Enters(1, kVoltageColumn, "63");
  const auto& model = Grid().Model();
  for (int column = 0; column < logview::kColumnCount; ++column)
    EXPECT_EQ(model.CellAt(1, column).isMarked, column == kVoltageColumn) << column;
  EXPECT_FALSE(model.CellAt(2, kVoltageColumn).isMarked);
  const QString who = ui::ToQString(Globals().AuthorGl.account);
  const QString where = ui::ToQString(Globals().AuthorGl.workstation);
  for (const QString& said :
       {model.NoteText(1, kVoltageColumn),
        model.data(model.index(1, kVoltageColumn), Qt::AccessibleDescriptionRole).toString()})
    EXPECT_TRUE(said.contains("Berichtigt: kV") && said.contains(who) && said.contains(where))
        << said.toStdString();
}

/// What the window says about the log and an anchor.
QString Verifies(RunningProgram& program, const QString& anchor) {
  QString result;
  program.InDialog("frmVerify", [&](QDialog& dialog) {
    Child<QLineEdit>(dialog, "txtAnchor").setText(anchor);
    Child<QPushButton>(dialog, "cmdVerify").click();
    result = Child<QPlainTextEdit>(dialog, "txtResult").toPlainText();
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program.Triggers(CommandId::mnuFileVerify);
  return result;
}

TEST_F(HistoryTest, TheWindowVerifiesTheLogAsVarnlogctlDoes) {
  Starts();
  Enters(1, kVoltageColumn, "63");
  const QString sound = Verifies(*program_, {});
  const std::string head = installation_.Ctl("verify").out;
  EXPECT_TRUE(sound.contains("Aufnahmen: 4, spätere Einträge: 1, Siegel: 3")) << sound.toStdString();
  EXPECT_TRUE(sound.contains(QString::fromStdString(head).section(' ', -1).trimmed())) << head;
  const QString anchor = sound.section("Stand: ", 1).section('\n', 0, 0);
  EXPECT_TRUE(
      Verifies(*program_, anchor.toLower().replace('-', ' ')).contains("enthält den genannten Stand"));
  EXPECT_TRUE(Verifies(*program_, anchor.chopped(1)).contains("kein Anker"));

  installation_.DamagesLog("DELETE FROM TXray WHERE tXrayCulIntIDPk = 2");
  const QString broken = Verifies(*program_, {});
  const QStringList told =
      QString::fromStdString(installation_.Ctl("verify").out).split('\n', Qt::SkipEmptyParts);
  ASSERT_FALSE(told.empty());
  for (const QString& line : told) EXPECT_TRUE(broken.contains(line)) << broken.toStdString();
  EXPECT_TRUE(broken.startsWith("Abweichungen: " + QString::number(told.size())));
}

TEST_F(HistoryTest, AnOlderCopyIsWarnedOfOnceAndABrokenChainInOneMessage) {
  namespace fs = std::filesystem;
  const fs::path copy = installation_.suite() / "old.mdb";
  Starts();
  Enters(1, kVoltageColumn, "63");
  program_.reset();
  fs::copy_file(installation_.log(), copy);
  Starts();
  Enters(1, logview::kCommentColumn, "o. B.");
  program_.reset();
  varnlog::test::CopyOver(copy, installation_.log());
  Starts();
  EXPECT_EQ(TakeMessages().filter("zuletzt darin gesehen").size(), 1);
  EXPECT_TRUE(Verifies(*program_, {}).contains("Ein Arbeitsplatz vermisste einen früheren Stand"));
  program_.reset();
  installation_.WithLog(false, [](dao::Database& log) {
    log.Execute(
        "DROP TRIGGER rSealChange; UPDATE TSeal SET tSealSPlace = 'x' WHERE tSealCulNrPk = 2;"
        "INSERT INTO TXray (tXraySName) VALUES ('Neu')");
  });
  Starts();
  const QStringList told = TakeMessages().filter("iegel");
  ASSERT_EQ(told.size(), 1) << told.join("; ").toStdString();
  for (const char* part : {"Die Regeln", "Siegel 2 wurde verändert", "1 Aufnahmen ohne Siegel"})
    EXPECT_TRUE(told[0].contains(part)) << told[0].toStdString();
  Enters(1, logview::kCommentColumn, "neu");
  EXPECT_EQ(Grid().CellText(1, logview::kCommentColumn), "neu") << "work goes on";
}

}  // namespace
}  // namespace varnlog::app::test
