#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/Files.h"
#include "tests/support/Child.h"
#include "tests/support/TestFolder.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

class FilesOnPosix : public testing::Test {
 protected:
  fs::path Holding(const std::string& name, const std::string& content) const {
    return folder_.Holding(name, content);
  }
  static std::string Content(const fs::path& path) {
    std::error_code error;
    return ReadWholeFile(path, error).value_or("cannot be read: " + error.message());
  }
  File OpenReadWrite(const fs::path& path) {
    std::error_code error;
    File file = File::Open(path, File::Mode::kReadWrite, error);
    EXPECT_FALSE(error) << error.message();
    return file;
  }

  test::TestFolder folder_;
};

/// A plain record lock, as other programs take it. 0 when it was granted.
int TakePlainLock(int descriptor, off_t offset, off_t length) {
  struct flock range {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  range.l_start = offset;
  range.l_len = length;
  return fcntl(descriptor, F_SETLK, &range) == 0 ? 0 : 1;
}

int TryPlainLock(const fs::path& path, off_t offset, off_t length) {
  return test::Child([&] { return TakePlainLock(open(path.c_str(), O_RDWR), offset, length); }).Wait();
}

TEST_F(FilesOnPosix, ReadsAWholeFileUpToALimitOrSaysWhyNot) {
  const fs::path path = Holding("zehn", "0123456789");
  std::error_code error;
  EXPECT_EQ(ReadWholeFile(path, error, 10), "0123456789");
  EXPECT_EQ(ReadWholeFile(path, error, 9), std::nullopt);
  EXPECT_EQ(error, std::errc::file_too_large);
  EXPECT_EQ(ReadWholeFile("/dev/zero", error, 100'000), std::nullopt);
  EXPECT_EQ(error, std::errc::file_too_large);
  const std::string large(3'000'000, 'x');
  EXPECT_EQ(Content(Holding("groß", large)), large);
  EXPECT_EQ(ReadWholeFile(folder_ / "fehlt", error), std::nullopt);
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_EQ(ReadWholeFile(folder_.Path(), error), std::nullopt);
  EXPECT_EQ(error, std::errc::is_a_directory);
  ASSERT_EQ(mkfifo((folder_ / "rohr").c_str(), 0600), 0);
  EXPECT_EQ(ReadWholeFile(folder_ / "rohr", error), std::nullopt);
  EXPECT_TRUE(error);
}

TEST_F(FilesOnPosix, KnowsWhatOthersMayChange) {
  const fs::path path = Holding("KVFILEDB.DLL", "x");
  const auto withMode = [&](mode_t mode) {
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return MayBeChangedByOthers(path);
  };
  EXPECT_FALSE(withMode(0755));
  EXPECT_TRUE(withMode(0757));
  EXPECT_TRUE(MayBeChangedByOthers(folder_ / "fehlt"));
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files to a group";
  EXPECT_FALSE(withMode(0775)) << "nobody else is in the administrator's group";
  constexpr gid_t kPractice = 4711;
  ASSERT_EQ(chown(path.c_str(), 0, kPractice), 0);
  EXPECT_TRUE(withMode(0775));
  EXPECT_FALSE(withMode(0755));
}

TEST_F(FilesOnPosix, KnowsTheFileItHasOpenFromAnotherThatTookItsName) {
  const fs::path path = Holding("varnlog.sdx", "alt");
  fs::create_symlink(path, folder_ / "verweis");
  const File file = OpenReadWrite(folder_ / "verweis");
  EXPECT_EQ(file.Identity(), IdentityOf(path));
  fs::rename(path, folder_ / "beiseite");
  EXPECT_NE(file.Identity(), IdentityOf(Holding("varnlog.sdx", "neu")));
  EXPECT_EQ(IdentityOf(folder_ / "fehlt"), std::nullopt);
  std::error_code error;
  EXPECT_FALSE(File::Open(folder_ / "verweis", File::Mode::kRead, error, File::Links::kRefuse).IsOpen());
  EXPECT_EQ(error, std::errc::too_many_symbolic_link_levels);
}

TEST_F(FilesOnPosix, ReportsAFullDiskAndAClosedFile) {
  std::error_code error;
  File full = File::Open("/dev/full", File::Mode::kReadWrite, error);
  ASSERT_TRUE(full.IsOpen());
  full.WriteAt(0, "x", error);
  EXPECT_EQ(error, std::errc::no_space_on_device);
  full.Close();
  static_cast<void>(full.Size(error));
  EXPECT_TRUE(error);
}

TEST_F(FilesOnPosix, ItsLockHoldsOffOtherProgramsInItsRangeOnly) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  std::error_code error;
  File file = OpenReadWrite(path);
  ASSERT_TRUE(file.TryLockRange(0, 4, error));
  // Closing the same file elsewhere in the process must not give the lock away.
  OpenReadWrite(path).Close();
  EXPECT_EQ(TryPlainLock(path, 3, 1), 1);
  EXPECT_EQ(TryPlainLock(path, 4, 6), 0);
  EXPECT_FALSE(OpenReadWrite(path).TryLockRange(0, 1, error));
  file.UnlockRange(0, 4);
  EXPECT_EQ(TryPlainLock(path, 0, 10), 0);
  ASSERT_TRUE(file.TryLockRange(0, 4, error));
  file.Close();
  EXPECT_EQ(TryPlainLock(path, 0, 10), 0) << "the lock goes with the file";
}

TEST_F(FilesOnPosix, OtherProgramsLocksHoldItOff) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  const test::Holder other([&] {
    TakePlainLock(open(path.c_str(), O_RDWR), 5, 1);
    return nullptr;
  });
  ASSERT_TRUE(other.Holds());
  File file = OpenReadWrite(path);
  std::error_code error;
  EXPECT_FALSE(file.TryLockRange(0, 10, error));
  EXPECT_TRUE(file.TryLockRange(0, 5, error));
}

TEST_F(FilesOnPosix, ANewcomerWaitsWhileAFileIsHeldAloneAndTheHolderLivesOn) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  File file = OpenReadWrite(path);
  if (file.TrySolitude() != File::Solitude::kAlone) GTEST_SKIP() << "no leases on this file system";
  test::Child newcomer([&] { return open(path.c_str(), O_WRONLY | O_APPEND) >= 0 ? 0 : 1; });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_TRUE(newcomer.IsRunning()) << "it must wait";
  file.EndSolitude();
  EXPECT_EQ(newcomer.Wait(), 0);
}

}  // namespace
}  // namespace varnlog::platform
