#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {

namespace fs = std::filesystem;

namespace {

class LinkedLogTest : public EngineTest {
 protected:
  LinkedLogTest() {
    const auto log = Open(path_);
    FillLog(*workspace_, *log, 3000);
    log->Close();
  }
  std::string path_ = MakeLog();
  fs::path file_ = folder_ / "log.mdb";
};

TEST_F(LinkedLogTest, TheNewFileHasTheNameAndPermissionsOfTheOld) {
  fs::create_directory(folder_ / "share");
  fs::rename(file_, folder_ / "share/real.mdb");
  fs::create_symlink(folder_ / "share/real.mdb", file_);
  const fs::perms group =
      fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::group_write;
  fs::permissions(file_, group);
  const auto before = fs::file_size(file_);
  Open(path_)->Execute("DELETE FROM TXray WHERE rowid > 10");
  engine_.CompactInPlace(path_, Path("log.TMP"), kNoOption, [&](double) {
    for (const std::string& name : folder_.Names()) {
      const bool isTemporary = name.starts_with("log.TMP");
      EXPECT_TRUE(!isTemporary || fs::status(folder_ / name).permissions() == group) << name;
    }
    return true;
  });
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_FALSE(fs::is_symlink(folder_ / "share/real.mdb"));
  EXPECT_LT(fs::file_size(file_), before / 2);
  EXPECT_EQ(fs::status(file_).permissions(), group);
}

TEST_F(LinkedLogTest, ALinkIsNoTemporaryFile) {
  fs::create_symlink(file_, folder_ / "log.TMP");
  const std::string other = MakeLog("log.2024.mdb");
  EXPECT_EQ(ErrorOf([&] { engine_.CompactInPlace(other, Path("log.TMP")); }), kFileExists);
}

}  // namespace

}  // namespace varnlog::dao
