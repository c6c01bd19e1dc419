#include <gtest/gtest.h>

#include "platform/Files.h"
#include "tests/support/TestFolder.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
  fs::path Holding(const std::string& name, const std::string& content) const {
    return folder_.Holding(name, content);
  }
  File OpenReadWrite(const fs::path& path) {
    std::error_code error;
    File file = File::Open(path, File::Mode::kReadWrite, error);
    EXPECT_FALSE(error) << error.message();
    return file;
  }

  test::TestFolder folder_;
};

TEST_F(Files, AreReadAndWrittenAtAnyPlaceByNamesInAnyScript) {
  const fs::path path = ToPath(FromPath(folder_.Path()) + "/Журнал ä.sdx");
  std::error_code error;
  File file = File::Open(path, File::Mode::kCreateNew, error);
  ASSERT_FALSE(error) << error.message();
  file.WriteAt(0, "0123456789", error);
  file.WriteAt(4, "xy", error);
  file.Truncate(8, error);
  file.Flush(error);
  EXPECT_FALSE(error) << error.message();
  EXPECT_EQ(ReadWholeFile(path, error), "0123xy67");
  EXPECT_EQ(FromPath(path.filename()), "Журнал ä.sdx");
  EXPECT_EQ(file.Identity(), IdentityOf(path));
  EXPECT_FALSE(File::Open(path, File::Mode::kCreateNew, error).IsOpen());
  EXPECT_EQ(error, std::errc::file_exists);
  EXPECT_EQ(ReadWholeFile(folder_ / "fehlt", error), std::nullopt);
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_EQ(ReadWholeFile(folder_.Path(), error), std::nullopt);
  EXPECT_EQ(error, std::errc::is_a_directory);
}

TEST_F(Files, LockTheirRangeAndNoOther) {
  const fs::path path = Holding("varnlog.sdx", "0123456789");
  std::error_code error;
  File file = OpenReadWrite(path);
  File other = OpenReadWrite(path);
  ASSERT_TRUE(file.TryLockRange(2, 4, error));
  EXPECT_FALSE(other.TryLockRange(5, 10, error));
  EXPECT_FALSE(error) << error.message();
  EXPECT_TRUE(other.TryLockRange(6, 10, error));
  file.UnlockRange(2, 4);
  EXPECT_TRUE(other.TryLockRange(0, 6, error));
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

}  // namespace
}  // namespace varnlog::platform
