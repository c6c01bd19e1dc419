#include <gtest/gtest.h>

#include "platform/SafeFile.h"
#include "tests/support/TestFolder.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

class SafeFile : public testing::Test {
 protected:
  fs::path Holding(const std::string& name, const std::string& content) const {
    return folder_.Holding(name, content);
  }
  static std::string Content(const fs::path& path) {
    std::error_code error;
    return ReadWholeFile(path, error).value_or("cannot be read: " + error.message());
  }
  std::size_t Entries() const { return folder_.Names().size(); }

  test::TestFolder folder_;
};

TEST_F(SafeFile, IsReplacedAndIsKeptUnderAnotherNameWhileSomebodyReadsIt) {
  const fs::path path = Holding("varnlog.ini", "alt");
  EXPECT_FALSE(ReplaceFile(path, "neu"));
  EXPECT_EQ(Content(path), "neu");
  std::error_code error;
  const File reader = File::Open(path, File::Mode::kRead, error);
  EXPECT_EQ(RenameFile(path, Holding("anderes", "wichtig"), IfTaken::kFail), std::errc::file_exists);
  EXPECT_EQ(Content(folder_ / "anderes"), "wichtig");
  EXPECT_EQ(ReplaceFile(folder_ / "fehlt" / "datei", "x"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(ReplaceFile(folder_.Path(), "x"), std::errc::is_a_directory);
  const auto second = KeepAside(path, ".second", Keep::kSecondName, error);
  ASSERT_TRUE(second) << error.message();
  EXPECT_TRUE(SameFile(path, *second));
  EXPECT_EQ(KeepAside(path, ".damaged", Keep::kMove, error), folder_ / "varnlog.ini.damaged");
  std::string read(3, ' ');
  EXPECT_EQ(reader.ReadAt(0, read, error), 3U);
  EXPECT_EQ(read, "neu");
  EXPECT_EQ(Entries(), 3U);
}

TEST_F(SafeFile, RemovesAFileWithWhatBelongsToItAndNeverAFolder) {
  Holding("log", "x");
  Holding("log-journal", "x");
  EXPECT_FALSE(RemoveFile(folder_ / "log", {"-journal", "-wal"}));
  EXPECT_EQ(Entries(), 0U);
  EXPECT_FALSE(RemoveFile(folder_ / "log"));
  EXPECT_TRUE(RemoveFile(folder_.Path()));
  EXPECT_TRUE(fs::exists(folder_.Path()));
}

TEST_F(SafeFile, SweepsWhatACrashLeftAndNothingElse) {
  const fs::path target = folder_ / "liste.pdf";
  std::error_code error;
  Holding("liste.pdf.new-1234-0", "von einem abgestürzten Lauf");
  Holding("liste.pdf.neu", "des Benutzers");
  const NewFile beingWritten(target, error);
  ASSERT_FALSE(error);
  EXPECT_EQ(Entries(), 2U);
  SweepUnfinished(target);
  EXPECT_TRUE(fs::exists(beingWritten.path()));
  EXPECT_TRUE(fs::exists(folder_ / "liste.pdf.neu"));
}

}  // namespace
}  // namespace varnlog::platform
