#include <filesystem>

#include <QPushButton>

#include "app/frmConvert.h"
#include "logview/Columns.h"
#include "tests/Paths.h"
#include "tests/support/TestFolder.h"
#include "tests/windows/RunningProgram.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;
using enum CommandId;

using varnlog::test::ReadFile;

/// A practice that finds logs of the earlier program and opens them.
class OldLog : public testing::Test {
 protected:
  void SetUp() override { fs::create_directories(folder_); }
  void TearDown() override {
    ui::CFileDialog::AnswerWith({});
    program_.reset();
    fs::permissions(folder_, fs::perms::owner_all);
  }

  /// The file as the practice finds it, cut to its first `length` bytes.
  void Finds(const std::string& sample, std::size_t length = std::string::npos) {
    original_ = ReadFile(fs::path(VARNLOG_SOURCE_DIR) / "tests/data/jet" / platform::ToPath(sample))
                    .substr(0, length);
    cli::Installation::Write(log_, original_);
  }
  void Opens(core::MessageAnswer answer) {
    if (!program_) program_ = std::make_unique<RunningProgram>(installation_, answer);
    program_->AnswersWith(answer);
    static_cast<void>(program_->TakeMessages());
    ui::CFileDialog::AnswerWith([this](const ui::CFileDialog&) { return log_.string(); });
    program_->Triggers(mnuFileOpen);
  }
  [[nodiscard]] bool IsOpen() {
    return program_->Globals().LogEngineGl->Database() != nullptr &&
           program_->Globals().strDataFileGl == log_.string();
  }
  /// The messages since the log was opened begin with these texts, up to their first placeholder.
  void ExpectMessages(std::initializer_list<core::TextKey> keys) {
    const QStringList shown = program_->TakeMessages();
    ASSERT_EQ(shown.size(), static_cast<qsizetype>(keys.size())) << shown.join("\n---\n").toStdString();
    auto message = shown.begin();
    for (const core::TextKey key : keys)
      EXPECT_TRUE((message++)->startsWith(program_->Text(key).section('$', 0, 0))) << key.name();
  }

  cli::Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  fs::path folder_ = installation_.suite() / platform::ToPath("Alte Bücher");
  fs::path log_ = folder_ / platform::ToPath("Röntgen.mdb");
  fs::path kept_ = folder_ / platform::ToPath("Röntgen.jet.mdb");
  std::string original_;
  std::unique_ptr<RunningProgram> program_;
};

TEST_F(OldLog, IsConvertedAndShownOnceTheUserAgrees) {
  Finds("log-1.0-jet3-cp1252.mdb");
  Opens(core::MessageAnswer::kNo);
  ExpectMessages({"CV_ASK"_key});
  EXPECT_EQ(program_->Globals().strDataFileGl, installation_.log().string()) << "what was open stays open";
  EXPECT_EQ(ReadFile(log_), original_);
  Opens(core::MessageAnswer::kYes);
  ExpectMessages({"CV_ASK"_key, "CV_DONE"_key});
  EXPECT_EQ(ReadFile(kept_), original_);
  // It has become a log like any other.
  Opens(core::MessageAnswer::kNo);
  ExpectMessages({});
  EXPECT_EQ(program_->Grid().ApproximateCount(), 98);
  EXPECT_TRUE(IsOpen());
  program_->Enters(0, logview::kCommentColumn, "neu");
  EXPECT_EQ(program_->Grid().CellText(0, logview::kCommentColumn), "neu");
}

TEST_F(OldLog, IsOfferedAtStartUpToo) {
  Finds("log-1.1-jet4-password-encoded.mdb");
  cli::Installation::Write(installation_.program() / "varnlog.ini",
                           "[User]\r\nDataFile=" + log_.string() + "\r\n");
  program_ = std::make_unique<RunningProgram>(installation_, core::MessageAnswer::kYes);
  ExpectMessages({"CV_ASK"_key, "CV_DONE"_key, "CV_PASSWORD"_key, "CV_ENCODED"_key});
  EXPECT_EQ(program_->Grid().ApproximateCount(), 54);
}

TEST_F(OldLog, IsShownOnlyWhereItIsWriteProtected) {
  installation_.Reports({cli::NewExposure("Zander", "XI", "03.02.2020", "08:00:00")});
  Finds("log-1.1-jet4-scratch.mdb");
  fs::permissions(log_, fs::perms::owner_read);
  fs::permissions(folder_, fs::perms::owner_read | fs::perms::owner_exec);
  Opens(core::MessageAnswer::kYes);
  // The reported exposure is not offered to be taken in.
  ExpectMessages({"CV_READONLY"_key});
  EXPECT_EQ(program_->Grid().ApproximateCount(), 262);
  EXPECT_EQ(program_->Grid().StateOf(0, logview::kCommentColumn), ui::CellState::kLocked);
  EXPECT_FALSE(program_->Window().Action(mnuEditUpdate)->isEnabled());
  EXPECT_EQ(ReadFile(log_), original_);
  EXPECT_FALSE(fs::exists(kept_));
  fs::permissions(folder_, fs::perms::owner_all);
  fs::permissions(log_, fs::perms::owner_all);
  Finds("log-1.1-jet4-scratch.mdb", 126976);
  fs::permissions(log_, fs::perms::owner_read);
  Opens(core::MessageAnswer::kYes);
  EXPECT_TRUE(program_->TakeMessages().join("").contains("205 von 262"));
  EXPECT_FALSE(IsOpen());
}

// The window appears when it takes longer than a moment, and its button is heard at once.
TEST_F(OldLog, CanBeCancelledWhileItIsConverted) {
  program_ = std::make_unique<RunningProgram>(installation_, core::MessageAnswer::kYes);
  start::Language texts(program_->Globals());
  ASSERT_TRUE(texts.InitLanguage());
  ui::MessageBox user(texts);
  frmConvert window(&program_->Window(), texts, user);
  window.Begin(legacy::ConversionStep::kTakingOver, 1000);
  EXPECT_TRUE(window.Advance(64));
  EXPECT_FALSE(window.isVisible());
  QTest::qWait(300);
  EXPECT_TRUE(window.Advance(500));
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(Child<QProgressBar>(window, "prgBar").value(), 500);
  QTest::mouseClick(&Child<QPushButton>(window, "cmdCancel"), Qt::LeftButton);
  EXPECT_FALSE(window.Advance(564));
}

}  // namespace
}  // namespace varnlog::app::test
