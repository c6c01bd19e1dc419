#include <filesystem>
#include <fstream>
#include <future>

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "app/SingleInstance.h"
#include "platform/Files.h"

namespace varnlog::app {
namespace {

namespace fs = std::filesystem;

/// A runtime folder of the test's own.
class SingleInstanceTest : public testing::Test {
 protected:
  void SetUp() override {
    before_ = qgetenv("XDG_RUNTIME_DIR");
    fs::permissions(platform::ToPath(runtime_.path().toStdString()), fs::perms::owner_all);
    qputenv("XDG_RUNTIME_DIR", runtime_.path().toUtf8());
  }
  void TearDown() override {
    // Windows knows no folder for the time of a session: it lies in the user's.
    QFile::remove(SingleInstance("/").LockFile());
    qputenv("XDG_RUNTIME_DIR", before_);
  }

  QTemporaryDir runtime_;
  QByteArray before_;
};

TEST_F(SingleInstanceTest, IsNotedWhereNobodyElseCanPutAnything) {
  QStringList asked;
  SingleInstance first("/");
  EXPECT_TRUE(first.LockFile().startsWith(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)))
      << first.LockFile().toStdString();
  ASSERT_TRUE(first.Claim());
  SingleInstance second("/");
  EXPECT_FALSE(second.Claim());
  first.OnActivation([&asked](const QString& file) { asked.append(file); });
  // As from another process: the first one goes on meanwhile.
  for (const QString& file : {QString(), QStringLiteral("/Röntgen 2020/Varnlog.mdb")}) {
    const qsizetype before = asked.size();
    auto reached = std::async(std::launch::async, [&] { return second.ActivateOther(file); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return asked.size() == before + 1; }));
    EXPECT_TRUE(reached.get());
  }
  EXPECT_EQ(asked, QStringList({"", "/Röntgen 2020/Varnlog.mdb"}));
}

TEST_F(SingleInstanceTest, TakesOverTheLockOfACopyThatHadItsNumberAndIsGone) {
  SingleInstance program("/");
  const qint64 self = QCoreApplication::applicationPid();
  std::ofstream(platform::ToPath(program.LockFile().toStdString()))
      << self << '\n'
      << platform::ExecutableName() << '\n'
      << QSysInfo::machineHostName().toStdString() << '\n';
  EXPECT_TRUE(program.Claim());
  EXPECT_FALSE(SingleInstance("/").Claim()) << "that one is held";
}

TEST_F(SingleInstanceTest, TellsWhenALockIsThereButNobodyAnswers) {
  SingleInstance program("/");
  std::ofstream(platform::ToPath(program.LockFile().toStdString())) << "4711\nvarnlog\nanother-workstation\n";
  EXPECT_FALSE(program.Claim());
  EXPECT_FALSE(program.ActivateOther({}));
}

}  // namespace
}  // namespace varnlog::app
