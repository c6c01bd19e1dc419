#include <QDateEdit>
#include <QSignalSpy>
#include <QTimer>
#include <QTreeWidget>

#include "backup/Backup.h"
#include "inspection/InspectionFolder.h"
#include "tests/Paths.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/FakeToothScheme.h"
#include "tests/windows/MainWindow.h"
#include "ui/FileDialog.h"

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using enum CommandId;

/// Copies and the inspection folder from the window.
class HandOver : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    fs::create_directory(folder_);
    const std::string program = platform::ProgramFile("varnlogctl");
    fs::copy_file(fs::path(VARNLOG_PROGRAM_DIR) / program, installation_.program() / program);
    (void)program_->TakeMessages();
  }
  ~HandOver() override { ui::CFileDialog::AnswerWith({}); }
  static bool Soon(const std::function<bool()>& condition, int milliseconds = 20'000) {
    return QTest::qWaitFor(condition, milliseconds);
  }
  [[nodiscard]] std::size_t Files() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  const fs::path folder_ = installation_.suite() / "Ablage";
};

TEST_F(HandOver, ACopyIsMadeAndBroughtBackAfterAQuestion) {
  program_->InDialog("frmBackup", [this](QDialog& dialog) {
    Child<QLineEdit>(dialog, "txtFolder").setText(QString::fromStdString(folder_.string()));
    Child<QPushButton>(dialog, "cmdNow").click();
    ASSERT_TRUE(Soon([&] { return Child<QTreeWidget>(dialog, "lstBackups").topLevelItemCount() == 1; }));
    EXPECT_EQ(Files(), 2U) << "the copy and its digest";
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program_->Triggers(mnuFileBackup);
  ASSERT_TRUE(program_->DialogsDone());
  program_->Enters(0, kVoltageColumn, "63");
  (void)program_->TakeMessages();
  program_->InDialog("frmBackup", [](QDialog& dialog) {
    Child<QPushButton>(dialog, "cmdRestore").click();
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program_->Triggers(mnuFileBackup);
  EXPECT_EQ(Stored("tXraySVolt"), "") << "as it was when the copy was made";
  EXPECT_TRUE(program_->TakeMessages().join('\n').contains(QString::fromStdString(folder_.string())))
      << "the question names the copy";
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
}

TEST_F(HandOver, ADailyCopyIsMadeOnceADayAndAVanishedFolderIsToldOnce) {
  start::modINIFile ini;
  ini.WriteString("Backup", "Folder", folder_.string(), Globals().IniFileGl);
  auto* const daily = Window().findChild<QTimer*>("timBackup");
  ASSERT_NE(daily, nullptr);
  const auto isTime = [daily] {
    QSignalSpy spy(daily, &QTimer::timeout);
    daily->start(0);
    ASSERT_TRUE(spy.wait());
  };
  const auto copies = [this] {
    std::size_t whole = 0;
    for (const auto& copy : backup::ListBackups(folder_, platform::ToPath(Globals().strDataFileGl)))
      whole += fs::exists(backup::DigestFile(copy.path)) ? 1U : 0U;
    return whole;
  };
  isTime();
  ASSERT_TRUE(Soon([&] { return copies() == 1 && Files() == 2; })) << "the copy and its digest";
  isTime();
  EXPECT_FALSE(Soon([&] { return copies() > 1; }, 1'500)) << "today's copy is there";
  EXPECT_EQ(TakeMessages(), QStringList()) << "nobody is told of what went well";
  fs::remove_all(folder_);
  isTime();
  isTime();
  const QStringList told = TakeMessages();
  ASSERT_EQ(told.size(), 1);
  EXPECT_TRUE(told.first().contains(QString::fromStdString(folder_.string()))) << told.first().toStdString();
  EXPECT_FALSE(fs::exists(folder_)) << "a share that is away is not replaced by a folder here";
}

TEST_F(HandOver, TheInspectionFolderIsMadeWhereItIsWanted) {
  ui::CFileDialog::AnswerWith([this](const ui::CFileDialog&) { return folder_.string(); });
  program_->InDialog("frmInspection", [](QDialog& dialog) {
    Child<QDateEdit>(dialog, "dtpFrom").setDate(QDate(2020, 1, 1));
    Child<QPushButton>(dialog, "cmdMake").click();
  });
  program_->Triggers(mnuFileInspection);
  EXPECT_EQ(Files(), 2U) << "the folder and its archive; "
                         << program_->TakeMessages().join(' ').toStdString();
}

TEST_F(HandOver, AnInspectionFolderStoppedAtAnyStepLeavesNothing) {
  class Stopping final : public inspection::InspectionProgress {
   public:
    explicit Stopping(int steps) : steps_(steps) {}
    bool Working(core::TextKey /*what*/, std::int64_t /*done*/, std::int64_t /*all*/) override {
      return steps_-- > 0;
    }

   private:
    int steps_;
  };
  const varnlog::test::FakeTexts texts;
  const varnlog::test::FakeToothScheme scheme;
  const platform::ShortDate shortDate;
  const platform::SystemClock clock;
  const inspection::InspectionOrder order = {.from = platform::DateTime::FromSerial(2020, 1, 1),
                                             .to = platform::DateTime::FromSerial(2021, 12, 31),
                                             .parent = folder_};
  int steps = 0;
  const auto makes = [&] {
    Stopping progress(steps);
    const inspection::InspectionContext context = {.log = *Globals().LogEngineGl->Database(),
                                                   .logFile = Globals().strDataFileGl,
                                                   .texts = texts,
                                                   .scheme = scheme,
                                                   .shortDate = shortDate,
                                                   .clock = clock,
                                                   .site = Globals().SiteGl,
                                                   .language = Globals().LanguageGl,
                                                   .levels = {}};
    return MakeInspectionFolder(context, order, progress);
  };
  while (!makes()) {
    ASSERT_EQ(Files(), 0U) << "after step " << steps;
    ASSERT_LT(++steps, 1'000);
  }
  EXPECT_GT(steps, 8) << "asked at least once a file";
  EXPECT_EQ(Files(), 2U);
}

}  // namespace
}  // namespace varnlog::app::test
