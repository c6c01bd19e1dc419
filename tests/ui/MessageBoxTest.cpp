#include <memory>

#include <QApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

#include "tests/support/FakeTexts.h"
#include "ui/MessageBox.h"

namespace varnlog::ui::test {
namespace {

class MessageBoxTest : public ::testing::Test {
 protected:
  /// Shows the message and lets `user` do something with the box.
  core::MessageAnswer Shown(const core::Message& message, const std::function<void(QMessageBox&)>& user) {
    QTimer::singleShot(0, [&user] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      user(*box);
    });
    return box_.Show(message);
  }
  static void PressesEscape(QMessageBox& box) {
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(&box, &escape);
  }

  varnlog::test::FakeTexts texts_{{{"GL_YES", "&Ja"}, {"GL_RETRY", ""}}};
  MessageBox box_{texts_};
};

TEST_F(MessageBoxTest, ShowsTheTextAsItIsUnderItsTitle) {
  const auto answer =
      Shown({.text = "<b>Müller</b>\rzweite Zeile", .title = "Titel", .icon = core::MessageIcon::kCritical},
            [](QMessageBox& box) {
              EXPECT_EQ(box.text(), "<b>Müller</b>\nzweite Zeile");
              EXPECT_EQ(box.textFormat(), Qt::PlainText);
              EXPECT_EQ(box.windowTitle(), "Titel");
              EXPECT_EQ(box.icon(), QMessageBox::Critical);
              box.button(QMessageBox::Ok)->click();
            });
  EXPECT_EQ(answer, core::MessageAnswer::kOk);
}

TEST_F(MessageBoxTest, ButtonsCarryTheProgramsTextsAndGiveTheirAnswers) {
  const core::Message question{.text = "Beenden?", .title = "", .buttons = core::MessageButtons::kYesNo};
  EXPECT_EQ(Shown(question,
                  [](QMessageBox& box) {
                    EXPECT_EQ(box.button(QMessageBox::Yes)->text(), "&Ja");
                    EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::Yes));
                    box.button(QMessageBox::No)->click();
                  }),
            core::MessageAnswer::kNo);
  EXPECT_EQ(Shown(question, [](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); }),
            core::MessageAnswer::kYes);
  const core::Message retry{.text = "Gesperrt", .title = "", .buttons = core::MessageButtons::kRetryCancel};
  EXPECT_EQ(Shown(retry,
                  [](QMessageBox& box) {
                    EXPECT_FALSE(box.button(QMessageBox::Retry)->text().isEmpty())
                        << "no text in the database";
                    box.button(QMessageBox::Retry)->click();
                  }),
            core::MessageAnswer::kRetry);
}

TEST_F(MessageBoxTest, EscapeIsTheHarmlessAnswer) {
  for (const auto& [buttons, answer] : {std::pair{core::MessageButtons::kOk, core::MessageAnswer::kOk},
                                        {core::MessageButtons::kYesNo, core::MessageAnswer::kNo},
                                        {core::MessageButtons::kRetryCancel, core::MessageAnswer::kCancel}}) {
    EXPECT_EQ(Shown({.text = "?", .title = "", .buttons = buttons}, PressesEscape), answer);
  }
}

TEST_F(MessageBoxTest, TakesTheHourglassAway) {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  Shown({.text = "fertig", .title = ""}, [](QMessageBox& box) {
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    box.accept();
  });
}

TEST_F(MessageBoxTest, OutlivesTheProgressThatItCameUpOver) {
  auto progress = std::make_unique<QProgressDialog>("Verbinden", "Abbrechen", 0, 10);
  progress->setWindowModality(Qt::ApplicationModal);
  progress->show();
  EXPECT_EQ(Shown({.text = "Niemand antwortet", .title = ""},
                  [&progress](QMessageBox& box) {
                    progress.reset();
                    box.accept();
                  }),
            core::MessageAnswer::kOk);
}

}  // namespace
}  // namespace varnlog::ui::test
