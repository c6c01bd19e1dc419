#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QTimer>

#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;
using enum CommandId;

class ContextMenu : public MainWindow {
 protected:
  /// Opens the menu on what has it and chooses the entry of that text, a submenu's too.
  void Chooses(QWidget& on, const QPoint& at, const QString& text) {
    bool found = false;
    QTimer::singleShot(0, &on, [&] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      QList<QAction*> actions = menu->actions();
      for (qsizetype i = 0; i < actions.size(); ++i) {
        if (actions[i]->menu() != nullptr) actions << actions[i]->menu()->actions();
        if (actions[i]->text() != text || !actions[i]->isEnabled()) continue;
        found = true;
        actions[i]->trigger();
        break;
      }
      menu->close();
    });
    emit on.customContextMenuRequested(at);
    EXPECT_TRUE(found) << text.toStdString();
    Settle();
  }
  void ChoosesOnRow(int row, core::TextKey key) {
    Grid().SetCurrentCell(row, logview::kPatientColumn);
    Chooses(Grid(), {}, Text(key));
  }
};

TEST_F(ContextMenu, ShowsAllOfAPatientAlsoOneThatTheSelectionCannotName) {
  Starts();
  ChoosesOnRow(0, "RS_PATIENTROWS"_key);
  EXPECT_EQ(Globals().SortSelectionGl, core::SelectionKind::kPatient);
  EXPECT_EQ(Patients(), (Names{"Abel", "Abel"}));
  Triggers(mnuSortAll);
  ChoosesOnRow(1, "RS_PATIENTROWS"_key);
  QTest::qWait(50);
  EXPECT_EQ(Patients(), Names{"O'Hara"});
}

TEST_F(ContextMenu, HidesColumnsFromKeysAndCopiesUntilTheyAreShownAgain) {
  Starts();
  const int width = Grid().ColumnWidth(kVoltageColumn);
  auto& headings = *Grid().horizontalHeader();
  Chooses(headings, {headings.sectionViewportPosition(kVoltageColumn) + 2, 2}, Text("RS_HIDECOLUMN"_key));
  Grid().SetCurrentCell(0, 0);
  Triggers(mnuEditNextMissing);
  EXPECT_EQ(Grid().Col(), 0) << "what is missing there cannot be entered";
  Triggers(mnuFileEnd);
  Starts();
  EXPECT_TRUE(Grid().isColumnHidden(kVoltageColumn));
  Grid().selectRow(0);
  ChoosesOnRow(0, "RS_COPYHEADINGS"_key);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(), "Patient\nAbel, Käthe *01.02.1960");
  Grid().selectRow(0);
  EXPECT_EQ(Grid().SelectionText().count('\t'), logview::kColumnCount - 2);
  Chooses(*Grid().horizontalHeader(), {2, 2}, Text("RS_ALLCOLUMNS"_key));
  EXPECT_FALSE(Grid().isColumnHidden(kVoltageColumn));
  EXPECT_EQ(Grid().ColumnWidth(kVoltageColumn), width);
}

TEST_F(ContextMenu, SaysWhatACellMeans) {
  Starts();
  const auto& model = Grid().Model();
  EXPECT_EQ(model.TipText(0, logview::kDateColumn), "Uhrzeit: 11:00:00");
  EXPECT_EQ(model.TipText(0, logview::kTypeColumn), Text("RS_TYPE_XC"_key));
  Grid().SetCurrentCell(0, logview::kTypeColumn);
  (void)TakeMessages();
  Chooses(Grid(), {}, Text("RS_WHATISTHIS"_key));
  const QString told = TakeMessages().value(0);
  EXPECT_TRUE(told.contains(Text("RS_TYPE_XC"_key))) << told.toStdString();
  EXPECT_TRUE(told.contains(Text("RS_STATE_LOCKED"_key))) << told.toStdString();
}

}  // namespace
}  // namespace varnlog::app::test
