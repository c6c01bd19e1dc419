#include <QStatusBar>

#include "app/ServerWait.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/LogFolder.h"
#include "tests/support/PrivateServer.h"
#include "tests/support/SilentHost.h"
#include "tests/windows/MainWindow.h"
#include "ui/FileDialog.h"

// The program on a log that lies on a server.

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;
using enum CommandId;

class ServerWindow : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    (void)TakeMessages();
  }
  void TearDown() override {
    ui::CFileDialog::AnswerWith({});
    MainWindow::TearDown();
  }
  /// Another workstation's entry into the last day's exposure.
  void BertaEnters(const char* volt) {
    installation_.WithLog(false, [volt](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;");
      rows->Edit();
      rows->Fields("tXraySVolt").SetText(volt);
      rows->Update();
    });
  }
  [[nodiscard]] bool Soon(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, 8'000);
  }
  void BeginsToEnter(int row, const char* text) {
    Window().activateWindow();
    Grid().SetCurrentCell(row, kVoltageColumn);
    Grid().setFocus();
    Settle();
    QTest::keyClick(&Grid(), Qt::Key_F2);
    Settle();
    ASSERT_TRUE(Grid().IsEditing());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), text);
  }

  [[nodiscard]] bool Says(core::TextKey key) { return Window().statusBar()->currentMessage() == Text(key); }

  varnlog::test::PrivateServer& server_ = varnlog::test::PrivateServer::Instance();
};

TEST_F(ServerWindow, WhatOthersChangeShowsByItselfButNotUnderAnEditor) {
  Grid().SetCurrentCell(2, kVoltageColumn);
  BertaEnters("71");
  EXPECT_TRUE(Soon([this] { return Grid().CellText(0, kVoltageColumn) == "71"; }));
  EXPECT_EQ(Grid().Row(), 2);
  BeginsToEnter(1, "65");
  BertaEnters("72");
  EXPECT_FALSE(QTest::qWaitFor([this] { return Grid().CellText(0, kVoltageColumn) == "72"; }, 1'500));
  EXPECT_TRUE(Grid().CommitEdit());
  EXPECT_TRUE(Soon([this] { return Grid().CellText(0, kVoltageColumn) == "72"; }));
  EXPECT_EQ(Grid().CellText(1, kVoltageColumn), "65");
  installation_.Reports({cli::NewExposure("Neu", "XI", "07.03.2021", "11:00:00")});
  EXPECT_EQ(installation_.Ctl("update").status, 0);
  EXPECT_TRUE(Soon([this] { return Grid().ApproximateCount() == 5; }));
  EXPECT_TRUE(TakeMessages().isEmpty());
}

TEST_F(ServerWindow, TheSecondOfTwoWhoEnterAValueIsToldWhoWasFirst) {
  BeginsToEnter(0, "65");
  BertaEnters("71");
  EXPECT_TRUE(Grid().CommitEdit());
  Settle();
  const QString message = TakeMessages().join('|');
  EXPECT_TRUE(message.startsWith(Text("RS_ERR_RECORDEX"_key))) << message.toStdString();
  EXPECT_TRUE(message.contains("Berta Berg (berta), Röntgen 2")) << message.toStdString();
  EXPECT_EQ(Stored("tXraySVolt"), "71");
}

TEST_F(ServerWindow, AnEntryThatMeetsNoServerStaysInItsEditorAndIsTriedAgain) {
  BeginsToEnter(0, "65");
  server_.Stop();
  program_->AnswersFirst({core::MessageAnswer::kCancel});
  EXPECT_FALSE(Grid().CommitEdit());
  Settle();
  EXPECT_EQ(TakeMessages().size(), 1);
  ASSERT_TRUE(Grid().IsEditing());
  server_.Start();
  QTest::qWait(2'200);  // so long nobody tries again
  EXPECT_TRUE(Grid().CommitEdit());
  EXPECT_FALSE(Grid().IsEditing());
  EXPECT_EQ(Stored("tXraySVolt"), "65");
  EXPECT_TRUE(Soon([this] { return Says("MN_RECONNECTED"_key); }));
  Triggers(mnuFileBackup);
  EXPECT_TRUE(TakeMessages().join('|').startsWith("3219")) << "and no dialog";
}

TEST_F(ServerWindow, WhatWasReadStaysInViewWhileTheServerIsAway) {
  const QStringList patients = ColumnTexts(logview::kPatientColumn);
  const QString title = Window().windowTitle();
  server_.Stop();
  Triggers(mnuViewLoad);
  EXPECT_TRUE(TakeMessages().join('|').contains(Text("RS_AWAY"_key)));
  QTest::qWait(2'200);  // so long nobody tries again
  InDialog("frmBegEnd", [](QDialog& dialog) { EntersPeriod(dialog, "01.02.2020", "03.02.2020"); });
  Triggers(mnuSortDateAll);
  EXPECT_TRUE(TakeMessages().join('|').contains(Text("RS_AWAY"_key)));
  EXPECT_EQ(ColumnTexts(logview::kPatientColumn), patients);
  EXPECT_EQ(Window().windowTitle(), title);
  EXPECT_EQ(Globals().SortSelectionGl, core::SelectionKind::kAll);
  InDialog("frmProperties", [](QDialog& dialog) {
    EXPECT_FALSE(dialog.findChild<QPushButton*>("cmdRepair")->isEnabled());
    dialog.reject();
  });
  Triggers(mnuViewProperties);
  Settle();
  const auto exported = installation_.suite() / "exported.json";
  ui::CFileDialog::AnswerWith([&](const ui::CFileDialog&) { return exported.string(); });
  Triggers(mnuFileExport);
  EXPECT_TRUE(TakeMessages().join('|').startsWith("3151"));
  EXPECT_FALSE(std::filesystem::exists(exported)) << "of which nobody knows whether it still holds";
  installation_.Reports({cli::NewExposure("Neu", "XI", "07.03.2021", "11:00:00")});
  Triggers(mnuEditUpdate);
  const QStringList messages = TakeMessages();
  EXPECT_EQ(messages.size(), 1) << messages.join('|').toStdString();
  EXPECT_TRUE(messages.join('|').contains(Text("GL_ERR_3151"_key)));
  EXPECT_EQ(ColumnTexts(logview::kPatientColumn), patients);
  server_.Start();
  EXPECT_TRUE(Soon([this] { return Says("MN_RECONNECTED"_key); }));
  EXPECT_EQ(ColumnTexts(logview::kPatientColumn), patients);
  // Nobody does anything here meanwhile, and nothing is left to be read.
  QTest::qWait(700);
  server_.Stop();
  server_.Start();
  BertaEnters("73");
  EXPECT_TRUE(Soon([this] { return Grid().CellText(0, kVoltageColumn) == "73"; }));
  EXPECT_TRUE(TakeMessages().isEmpty());
}

TEST_F(ServerWindow, AServerThatSaysNothingIsGivenUpWithEscape) {
  const varnlog::test::SilentHost host;
  const auto link = installation_.suite() / "silent.mdb";
  cli::Installation::Write(link, "[VarnlogServer]\nHost=127.0.0.1\nPort=" + host.Port() + "\n");
  dao::DBEngine engine;
  engine.SetSystemDB((installation_.program() / "system.mdw").string());
  const auto workspace = engine.CreateWorkspace("Silent", "Admin", "");
  const auto opening = [&] {
    return varnlog::test::ErrorOf([&] { (void)workspace->OpenDatabase(link.string(), false, false); });
  };
  int asked = 0;
  const dao::WaitingScope before(engine, [&asked] { return ++asked > 1; });
  {
    const varnlog::test::FakeTexts texts;
    const ServerWait wait(texts, engine);
    int alive = 0;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout, [&alive] { ++alive; });
    ticks.start(50);
    QElapsedTimer sinceEscape;
    InDialog("dlgConnecting", [&](QDialog& dialog) {
      EXPECT_TRUE(dialog.isVisible());
      sinceEscape.start();
      QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(opening(), dao::ErrorNumber::kCancelled);
    EXPECT_LT(sinceEscape.elapsed(), 1'000);
    EXPECT_GT(alive, 5);
    EXPECT_EQ(asked, 0);
  }
  EXPECT_EQ(opening(), dao::ErrorNumber::kCancelled);
  EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace varnlog::app::test
