#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/Files.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "Röntgen Buch XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override { fs::remove_all(folder_); }

  fs::path Holding(const std::string& name, const std::string& content) {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return folder_ / name;
  }
  static std::string Content(const fs::path& path) {
    std::error_code error;
    return ReadWholeFile(path, error).value_or("cannot be read: " + error.message());
  }
  std::size_t Entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }
  File OpenReadWrite(const fs::path& path) {
    std::error_code error;
    File file = File::Open(path, File::Mode::kReadWrite, error);
    EXPECT_FALSE(error) << error.message();
    return file;
  }

  fs::path folder_;
};

/// Runs `work` in another process, which holds none of this one's locks; its result is the exit status.
int InAnotherProcess(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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
  return InAnotherProcess([&] { return TakePlainLock(open(path.c_str(), O_RDWR), offset, length); });
}

TEST_F(Files, ReadsAWholeFileUpToALimit) {
  const fs::path path = Holding("zehn", "0123456789");
  std::error_code error;
  EXPECT_EQ(ReadWholeFile(path, error, 10), "0123456789");
  EXPECT_EQ(ReadWholeFile(path, error, 9), std::nullopt);
  EXPECT_EQ(error, std::errc::file_too_large);
  EXPECT_EQ(ReadWholeFile("/dev/zero", error, 100'000), std::nullopt);
  EXPECT_EQ(error, std::errc::file_too_large);
  const std::string large(3'000'000, 'x');
  EXPECT_EQ(Content(Holding("groß", large)), large);
}

TEST_F(Files, SaysWhyAFileCannotBeRead) {
  std::error_code error;
  EXPECT_EQ(ReadWholeFile(folder_ / "fehlt", error), std::nullopt);
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_EQ(ReadWholeFile(folder_, error), std::nullopt);
  EXPECT_EQ(error, std::errc::is_a_directory);
  ASSERT_EQ(mkfifo((folder_ / "rohr").c_str(), 0600), 0);
  EXPECT_EQ(ReadWholeFile(folder_ / "rohr", error), std::nullopt);
  EXPECT_TRUE(error);
}

TEST_F(Files, KnowsWhatOthersMayChange) {
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

TEST_F(Files, KnowsTheFileItHasOpenFromAnotherThatTookItsName) {
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

TEST_F(Files, ReportsAFullDiskAndAClosedFile) {
  std::error_code error;
  File full = File::Open("/dev/full", File::Mode::kReadWrite, error);
  ASSERT_TRUE(full.IsOpen());
  full.WriteAt(0, "x", error);
  EXPECT_EQ(error, std::errc::no_space_on_device);
  full.Close();
  static_cast<void>(full.Size(error));
  EXPECT_TRUE(error);
}

TEST_F(Files, ItsLockHoldsOffOtherProgramsInItsRangeOnly) {
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

TEST_F(Files, OtherProgramsLocksHoldItOff) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  const int result = InAnotherProcess([&] {
    if (TakePlainLock(open(path.c_str(), O_RDWR), 5, 1) != 0) return 9;
    return InAnotherProcess([&] {
      std::error_code error;
      File file = File::Open(path, File::Mode::kReadWrite, error);
      const bool inside = file.TryLockRange(0, 10, error);
      const bool outside = file.TryLockRange(0, 5, error);
      return (inside ? 1 : 0) + (outside ? 0 : 2);
    });
  });
  EXPECT_EQ(result, 0);
}

TEST_F(Files, KnowsWhetherItHasAFileToItself) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  File file = OpenReadWrite(path);
  {
    const File other = OpenReadWrite(path);
    EXPECT_EQ(file.TrySolitude(), File::Solitude::kShared);
  }
  const File::Solitude solitude = file.TrySolitude();
  if (solitude == File::Solitude::kUnsupported) GTEST_SKIP() << "no leases on this file system";
  EXPECT_EQ(solitude, File::Solitude::kAlone);
  file.EndSolitude();
  const File later = OpenReadWrite(path);
  EXPECT_EQ(file.TrySolitude(), File::Solitude::kShared);
}

TEST_F(Files, ANewcomerWaitsWhileAFileIsHeldAloneAndTheHolderLivesOn) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  File file = OpenReadWrite(path);
  if (file.TrySolitude() != File::Solitude::kAlone) GTEST_SKIP() << "no leases on this file system";
  const pid_t newcomer = fork();
  if (newcomer == 0) _exit(open(path.c_str(), O_WRONLY | O_APPEND) >= 0 ? 0 : 1);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(waitpid(newcomer, nullptr, WNOHANG), 0) << "it must wait";
  file.EndSolitude();
  int status = -1;
  EXPECT_EQ(waitpid(newcomer, &status, 0), newcomer);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace varnlog::platform
