#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/SafeFile.h"
#include "tests/support/TestFolder.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

class SafeFileOnPosix : public testing::Test {
 protected:
  fs::path Holding(const std::string& name, const std::string& content, mode_t mode = 0644) const {
    const fs::path path = folder_.Holding(name, content);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
  }
  static std::string Content(const fs::path& path) {
    std::error_code error;
    return ReadWholeFile(path, error).value_or("cannot be read: " + error.message());
  }
  static unsigned ModeOf(const fs::path& path) {
    return static_cast<unsigned>(fs::symlink_status(path).permissions());
  }
  static uid_t OwnerOf(const fs::path& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_uid : static_cast<uid_t>(-1);
  }
  std::size_t Entries() const { return folder_.Names().size(); }

  test::TestFolder folder_;
};

TEST_F(SafeFileOnPosix, ASettingsFileIsReplacedWhereItIsAndKeepsItsPermissions) {
  const fs::path path = Holding("varnlog.ini", "alt", 0640);
  EXPECT_FALSE(ReplaceFile(path, "neu"));
  EXPECT_EQ(Content(path), "neu");
  EXPECT_EQ(ModeOf(path), 0640U);
  fs::create_symlink("varnlog.ini", folder_ / "verweis");
  fs::create_symlink("verweis", folder_ / "verweis2");
  EXPECT_FALSE(ReplaceFile(folder_ / "verweis2", "noch neuer"));
  EXPECT_TRUE(fs::is_symlink(folder_ / "verweis2"));
  EXPECT_EQ(Content(path), "noch neuer");
  EXPECT_EQ(Entries(), 3U) << "nothing else stays in the folder";
}

TEST_F(SafeFileOnPosix, LeavesEverythingAsItWasWhenReplacingFails) {
  EXPECT_EQ(ReplaceFile(folder_ / "fehlt/datei", "x"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(ReplaceFile(folder_.Path(), "x"), std::errc::is_a_directory);
  EXPECT_EQ(ReplaceFile(Holding("geschützt", "alt", 0444), "x"), std::errc::permission_denied);
  EXPECT_EQ(Content(folder_ / "geschützt"), "alt");
  ASSERT_EQ(mkfifo((folder_ / "rohr").c_str(), 0600), 0);
  EXPECT_EQ(ReplaceFile(folder_ / "rohr", "x"), std::errc::not_supported);
  EXPECT_EQ(Entries(), 2U);
}

TEST_F(SafeFileOnPosix, WritesThroughNoNameThatAStrangerCouldHavePutThere) {
  const fs::path theirs = Holding("fremd", "von jemandem");
  const fs::path target = folder_ / "Varnlog.mdb.intake";
  fs::create_symlink(theirs, target);
  std::error_code error;
  {
    NewFile made(target, error);
    ASSERT_FALSE(error);
    NewFile other(target, error);
    EXPECT_NE(made.path(), other.path());
    EXPECT_EQ(ModeOf(made.path()), 0600U);
    made.file().WriteAt(0, "Patienten", error);
    EXPECT_EQ(made.TakePlace(IfTaken::kFail), std::errc::file_exists);
    ASSERT_FALSE(made.TakePlace(IfTaken::kReplace));
  }
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_EQ(Content(target), "Patienten");
  EXPECT_EQ(Content(theirs), "von jemandem");
  fs::create_symlink(folder_ / "nirgends", folder_ / "falle");
  EXPECT_FALSE(File::Open(folder_ / "falle", File::Mode::kCreateNew, error).IsOpen());
  EXPECT_EQ(Entries(), 3U);
}

TEST_F(SafeFileOnPosix, IsForThePeopleOfItsModelOrOfTheFolder) {
  const fs::path log = Holding("Varnlog.mdb", "x", 0440);
  const auto modeOfNew = [&](const fs::path& target, const fs::path& model) {
    std::error_code error;
    NewFile made(target, error, model);
    EXPECT_FALSE(made.TakePlace(IfTaken::kReplace));
    return ModeOf(target);
  };
  EXPECT_EQ(modeOfNew(folder_ / "a", log), 0640U);
  EXPECT_EQ(modeOfNew(Holding("b", "", 0666), log), 0640U) << "rather the model than the file replaced";
  EXPECT_EQ(modeOfNew(Holding("c", "", 0666), {}), 0666U);
  EXPECT_EQ(modeOfNew(folder_ / "d", folder_ / "fehlt"), 0600U);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  EXPECT_EQ(modeOfNew(folder_ / "e", {}), 0660U) << "the folder is the practice's, not everybody's";
  fs::create_symlink(Holding("offen", "", 0666), folder_ / "f");
  EXPECT_EQ(modeOfNew(folder_ / "f", {}), 0660U) << "what a link points to says nothing";
}

TEST_F(SafeFileOnPosix, AnAdministratorLocksNobodyOut) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  constexpr uid_t kPractice = 4711;
  const fs::path log = Holding("Varnlog.mdb", "x", 0600);
  ASSERT_EQ(chown(log.c_str(), kPractice, kPractice), 0);
  EXPECT_FALSE(CopyWholeFile(log, folder_ / "kopie", IfTaken::kFail, log));
  EXPECT_EQ(OwnerOf(folder_ / "kopie"), kPractice);
  ASSERT_EQ(chown(folder_.Path().c_str(), kPractice, kPractice), 0);
  EXPECT_FALSE(ReplaceFile(folder_ / "varnlog.ini", "x"));
  EXPECT_EQ(OwnerOf(folder_ / "varnlog.ini"), kPractice);
}

TEST_F(SafeFileOnPosix, CopiesWithoutOverwriting) {
  const fs::path source = Holding("varnlog.md0", "Vorlage", 0444);
  const fs::path target = folder_ / "Varnlog.mdb";
  EXPECT_FALSE(CopyWholeFile(source, target, IfTaken::kFail, {}));
  EXPECT_EQ(Content(target), "Vorlage");
  EXPECT_EQ(ModeOf(target), 0600U);
  const fs::path other = Holding("anderes", "wichtig");
  EXPECT_EQ(CopyWholeFile(source, other, IfTaken::kFail, {}), std::errc::file_exists);
  EXPECT_EQ(Content(other), "wichtig");
  EXPECT_FALSE(CopyWholeFile(source, other, IfTaken::kReplace, {}));
  EXPECT_EQ(Content(other), "Vorlage");
  EXPECT_EQ(CopyWholeFile(folder_ / "fehlt", folder_ / "neu", IfTaken::kFail, {}),
            std::errc::no_such_file_or_directory);
  EXPECT_EQ(Entries(), 3U);
}

TEST_F(SafeFileOnPosix, KeepsEveryFileAsideUnderANameOfItsOwn) {
  const fs::path log = Holding("Varnlog.mdb", "eins", 0640);
  Holding("Varnlog.mdb.damaged", "von früher");
  fs::create_symlink("nirgends", folder_ / "Varnlog.mdb.damaged2");
  std::error_code error;
  const auto second = KeepAside(log, ".damaged", Keep::kSecondName, error);
  ASSERT_EQ(second, folder_ / "Varnlog.mdb.damaged3") << error.message();
  EXPECT_TRUE(SameFile(log, *second));
  EXPECT_EQ(KeepAside(log, ".damaged", Keep::kMove, error), folder_ / "Varnlog.mdb.damaged4");
  EXPECT_FALSE(fs::exists(log));
  EXPECT_EQ(KeepAside(log, ".damaged", Keep::kMove, error), std::nullopt);
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_EQ(Content(folder_ / "Varnlog.mdb.damaged"), "von früher");
}

TEST_F(SafeFileOnPosix, SweepsFormerLeftOversThatAreItsOwnAndOld) {
  const auto old = fs::file_time_type::clock::now() - std::chrono::hours(25);
  const fs::path left = Holding("log.intake.tmp", "VLINTAK1");
  const fs::path other = Holding("another", "of somebody");
  SweepFormer(left);
  EXPECT_TRUE(fs::exists(left)) << "a run may be writing it";
  fs::last_write_time(left, old);
  SweepFormer(left, [](const File&) { return false; });
  {
    const std::ifstream open(left);
    SweepFormer(left);
  }
  EXPECT_TRUE(fs::exists(left)) << "open, or something else by its content";
  fs::last_write_time(other, old);
  fs::create_symlink(other, folder_ / "link");
  SweepFormer(folder_ / "link");
  EXPECT_TRUE(fs::exists(other) && fs::is_symlink(folder_ / "link"));
  SweepFormer(left);
  EXPECT_FALSE(fs::exists(left));
}

}  // namespace
}  // namespace varnlog::platform
