#include <filesystem>
#include <fstream>
#include <set>

#include <QHelpContentWidget>
#include <QHelpIndexWidget>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextBrowser>

#include "app/Help.h"
#include "app/HelpFile.h"
#include "tests/Paths.h"
#include "tests/windows/RunningProgram.h"
#include "ui/HelpTopic.h"
#include "ui/QtText.h"

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;
using enum CommandId;
namespace fs = std::filesystem;

constexpr int kPatience = 10'000;

std::set<fs::path> FilesIn(const fs::path& folder) {
  std::set<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) files.insert(entry.path());
  return files;
}

class HelpWindow : public testing::Test {
 protected:
  void Starts(bool hasHelp = true) {
    if (hasHelp) {
      fs::copy(fs::path(VARNLOG_PROGRAM_DIR) / "help", installation_.program() / "help",
               fs::copy_options::recursive);
    }
    program_ = std::make_unique<RunningProgram>(installation_);
    (void)program_->TakeMessages();
  }
  /// nullptr while the help is not shown.
  static QWidget* Shown() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == "frmHelp" && window->isVisible()) return window;
    }
    return nullptr;
  }
  QWidget& Window() {
    if (Shown() == nullptr) throw std::runtime_error("no help window");
    return *Shown();
  }
  std::string Page() { return Child<QTextBrowser>(Window(), "txtPage").source().fileName().toStdString(); }
  std::string Headline() {
    return Child<QTextBrowser>(Window(), "txtPage").document()->firstBlock().text().toStdString();
  }

  cli::Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  std::unique_ptr<RunningProgram> program_;
};

TEST_F(HelpWindow, EveryLanguagesFileHoldsItsPagesTheirLinksAndKeywords) {
  static const QRegularExpression link(QStringLiteral("href=\"([^\"]+)\""));
  for (const QString code : {"D", "GB", "E", "I", "F", "NL", "CYR"}) {
    const auto help = HelpCollection::Open(VARNLOG_PROGRAM_DIR "/help/varnlog-" + code + ".qch");
    ASSERT_NE(help, nullptr) << code.toStdString();
    const QList<QUrl> pages =
        help->Engine().files(QStringLiteral("varnlog"), QString(), QStringLiteral("html"));
    EXPECT_EQ(pages.size(), 14) << code.toStdString();
    for (const QUrl& page : pages) {
      const QString html = QString::fromUtf8(help->Engine().fileData(page));
      EXPECT_FALSE(html.contains('{')) << page.path().toStdString();
      for (auto found = link.globalMatch(html); found.hasNext();) {
        const QUrl target = page.resolved(found.next().captured(1));
        EXPECT_FALSE(help->Engine().fileData(target).isEmpty()) << target.toString().toStdString();
      }
    }
    QHelpIndexModel& index = *help->Engine().indexModel();
    index.createIndex({});
    EXPECT_TRUE(QTest::qWaitFor([&] { return index.rowCount() > 40; }, kPatience)) << code.toStdString();
  }
}

TEST_F(HelpWindow, TheContentsListThePagesAndFollowThem) {
  Starts();
  program_->Triggers(mnuHelpContents);
  auto& contents = Child<QHelpContentWidget>(Window(), "trvContents");
  ASSERT_TRUE(QTest::qWaitFor([&] { return contents.model()->rowCount() > 0; }, kPatience));
  EXPECT_EQ(contents.model()->rowCount(), 14);
  contents.setCurrentIndex(contents.model()->index(1, 0));
  EXPECT_EQ(Page(), "update.html");
  Child<QAction>(Window(), "cmdBack").trigger();
  EXPECT_EQ(Page(), "overview.html");
  RunningProgram::Settle();
  EXPECT_EQ(contents.currentIndex().row(), 0);
  program_->Triggers(mnuHelpOnHelp);
  EXPECT_EQ(contents.currentIndex().row(), contents.model()->rowCount() - 1);
}

TEST_F(HelpWindow, AKeywordLeadsToItsPage) {
  Starts();
  program_->Triggers(mnuHelpIndex);
  auto& index = Child<QHelpIndexWidget>(Window(), "lvwIndex");
  ASSERT_TRUE(QTest::qWaitFor([&] { return index.model()->rowCount() > 0; }, kPatience));
  auto& keyword = Child<QLineEdit>(Window(), "txtKeyword");
  QTest::keyClicks(&keyword, "schreibsch");
  EXPECT_EQ(index.model()->rowCount(), 1);
  QTest::keyClick(&keyword, Qt::Key_Return);
  EXPECT_EQ(Page(), "datafiles.html");
}

TEST_F(HelpWindow, TheSearchFindsBeginningsOfWordsWhateverIsTyped) {
  Starts();
  program_->Triggers(mnuHelpSearch);
  auto& words = Child<QLineEdit>(Window(), "txtWords");
  auto& results = Child<QListWidget>(Window(), "lvwResults");
  const auto finds = [&](const char* text) {
    words.clear();
    QTest::keyClicks(&words, text);
    (void)QTest::qWaitFor([&] { return results.count() > 0; }, 2000);
    return results.count();
  };
  words.setText("Apostroph");
  ASSERT_TRUE(QTest::qWaitFor([&] { return results.count() == 1; }, kPatience)) << "once the pages are read";
  for (const char* text : {"apostr", "\"Apostroph* (", "name apostroph"}) EXPECT_EQ(finds(text), 1) << text;
  EXPECT_GT(finds("aufn"), 5);
  EXPECT_EQ(finds("apostroph schreibschutz"), 0);
  ASSERT_EQ(finds("apostroph"), 1);
  QTest::keyClick(&words, Qt::Key_Return);
  EXPECT_EQ(Page(), "patients.html");
  EXPECT_EQ(Child<QTextBrowser>(Window(), "txtPage").extraSelections().size(), 1);
}

TEST_F(HelpWindow, F1InADialogShowsThePageAboutItAndLeavesBothUsable) {
  Starts();
  program_->InDialog("frmPatSearch", [&](QDialog& dialog) {
    QTest::keyClick(&Child<QLineEdit>(dialog, "txtSearch"), Qt::Key_F1);
    RunningProgram::Settle();
    EXPECT_EQ(Page(), "patients.html");
    QTest::mouseClick(&Child<QWidget>(Window(), "tlbHelp"), Qt::LeftButton);
    QTest::keyClick(&Window(), Qt::Key_F1);
    EXPECT_EQ(Page(), "help.html") << "the help is not blocked by the dialog";
    Child<QPushButton>(dialog, "cmdCancel").click();
  });
  program_->Triggers(mnuSortPatAll);
  EXPECT_TRUE(program_->DialogsDone());
  program_->Triggers(mnuHelpContents);
  EXPECT_EQ(Page(), "overview.html") << "still there after the dialog";
}

TEST_F(HelpWindow, StandsBesideTheButtonsOfAQuestionAndGoesBackAfterwards) {
  Starts();
  program_->Triggers(mnuHelpContents);
  const QRect place = Window().geometry();
  QMessageBox question(QMessageBox::Question, {}, "?", QMessageBox::Yes | QMessageBox::No,
                       &program_->Window());
  ui::SetHelpTopic(question, "RC_XRNOTUPDATED");
  QTimer::singleShot(0, &question, [&] {
    QTest::keyClick(&question, Qt::Key_F1);
    RunningProgram::Settle();
    EXPECT_EQ(Page(), "update.html");
    EXPECT_FALSE(Window().frameGeometry().intersects(question.frameGeometry()));
    question.reject();
  });
  question.exec();
  program_->Triggers(mnuHelpContents);
  EXPECT_EQ(Window().geometry(), place);
}

TEST_F(HelpWindow, IsClosedWithTheProgramKeepsItsPlaceAndWritesNothingIntoTheFolder) {
  Starts();
  program_->Triggers(mnuHelpSearch);
  Window().resize(900, 500);
  RunningProgram::Settle();
  const auto files = FilesIn(installation_.program() / "help");
  QTest::qWait(200);
  EXPECT_EQ(FilesIn(installation_.program() / "help"), files);
  ASSERT_TRUE(program_->Quits());
  EXPECT_EQ(Shown(), nullptr);
  program_.reset();

  program_ = std::make_unique<RunningProgram>(installation_);
  program_->Triggers(mnuHelpSearch);
  EXPECT_EQ(Window().width(), std::min(900, Window().screen()->availableGeometry().width()));
}

TEST_F(HelpWindow, AMissingOrForeignHelpFileIsTold) {
  Starts(false);
  core::Globals globals;
  globals.ProgramFolderGl = installation_.program().string();
  const std::string file = HelpFile(globals);
  program_->Triggers(mnuHelpContents);
  fs::create_directories(platform::ToPath(file).parent_path());
  cli::Installation::Write(platform::ToPath(file), "no help file at all");
  program_->Triggers(mnuHelpIndex);
  const QStringList messages = program_->TakeMessages();
  ASSERT_EQ(messages.size(), 2);
  for (const QString& message : messages) EXPECT_TRUE(message.contains(ui::ToQString(file)));
  EXPECT_EQ(Shown(), nullptr);
}

}  // namespace
}  // namespace varnlog::app::test
