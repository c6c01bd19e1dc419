#include <gtest/gtest.h>

#include "app/CFormPosIni.h"
#include "app/CMruINI.h"
#include "start/modINIFile.h"
#include "tests/start/AppFixture.h"
#include "tests/support/Table.h"

namespace varnlog::app {
namespace {

class Window final : public PlacedWindow {
 public:
  [[nodiscard]] std::string Name() const override { return "frmMDIMain"; }
  [[nodiscard]] WindowPlace Place() const override { return place; }
  [[nodiscard]] WindowState State() const override { return state; }
  void SetState(WindowState value) override { state = value; }
  void MoveTo(const WindowPlace& value) override { place = value; }
  [[nodiscard]] int ScreenWidth() const override { return 1920; }
  [[nodiscard]] int ScreenHeight() const override { return 1080; }

  [[nodiscard]] std::string Text() const {
    return std::to_string(place.left) + "," + std::to_string(place.top) + "," + std::to_string(place.width) +
           "x" + std::to_string(place.height) + " " + std::to_string(static_cast<int>(state));
  }

  WindowPlace place{1, 2, 3, 4};
  WindowState state = WindowState::kNormal;
};

class Keepers : public testing::Test {
 protected:
  start::test::SuiteFolder folder_;
  std::string path_ = (folder_.Program() / "varnlog.ini").string();
  start::modINIFile ini_;
};

using FormPosition = Keepers;

TEST_F(FormPosition, ComesBackAsItWasSaved) {
  Window window;
  window.place = {-20, 30, 800, 600};
  CFormPosIni keeper(ini_);
  keeper.SetIniFile(path_);
  keeper.SetForm(&window);
  keeper.SaveForm();
  EXPECT_EQ(ini_.ReadString("Form Positions", "frmMDIMain", path_), "L=-20;T=30;W=800;H=600;S=0");
  window.place = {};
  EXPECT_TRUE(keeper.RestoreForm(true));
  EXPECT_EQ(window.Text(), "-20,30,800x600 0");
}

TEST_F(FormPosition, IsReadFromWhatStandsThere) {
  const Table<const char*, bool, bool, const char*> rows = {
      {"", true, false, "1,2,3x4 0"},
      {"Unsinn", true, false, "1,2,3x4 0"},
      {"L=1;T=2;W=3;S=0", true, false, "1,2,3x4 0"},
      {"L=x;T=20;W=30;H=40;S=0", true, false, "1,2,3x4 0"},
      {"L=10;T=20;W=30;H=40", true, true, "10,20,30x40 0"},
      {"S=0;H=40;W=30;T=20;L=10", true, true, "10,20,30x40 0"},
      {"L=10;T=20;W=30;H=40;S=2", true, true, "1,2,3x4 2"},
      {"S=2", true, true, "1,2,3x4 2"},
      {"L=10;T=20;W=30;H=40;S=1", true, true, "1,2,3x4 1"},
      {"L=10;T=20;W=30;H=40;S=7", true, true, "10,20,30x40 0"},
      {"L=1920;T=1080;W=800;H=600;S=0", true, true, "1120,480,800x600 0"},
      {"L=1920;T=1080;W=800;H=600;S=0", false, true, "1920,1080,800x600 0"},
      {"L=1919;T=1079;W=800;H=600;S=0", true, true, "1919,1079,800x600 0"},
      {"L=0;T=0;W=0;H=1000000;S=0", true, true, "0,0,0x1000000 0"},
      {"L=99999999999999999999;T=5;W=-99999999999999999999;H=2;S=0", true, true, "1001920,5,-1000000x2 0"}};
  for (const auto& [stored, keepVisible, restored, expected] : rows) {
    Window window;
    ASSERT_TRUE(ini_.WriteString("Form Positions", "frmMDIMain", stored, path_));
    CFormPosIni keeper(ini_);
    keeper.SetIniFile(path_);
    keeper.SetForm(&window);
    EXPECT_EQ(keeper.RestoreForm(keepVisible), restored) << stored;
    EXPECT_EQ(window.Text(), expected) << stored;
  }
}

TEST_F(FormPosition, IsTheMiddleOfTheScreenWhenCentred) {
  Window window;
  window.place = {0, 0, 400, 300};
  CFormPosIni keeper(ini_);
  keeper.SetForm(&window);
  keeper.CenterForm();
  EXPECT_EQ(window.Text(), "760,390,400x300 0");
  EXPECT_EQ(keeper.IniFile(), "test_app.ini");
}

class Menu final : public MruMenu {
 public:
  void ShowEntries(const std::vector<MruEntry>& shown) override {
    text.clear();
    for (const MruEntry& entry : shown) {
      EXPECT_EQ(entry.caption.substr(4), entry.path);
      text += entry.caption + "<" + entry.tag + "> ";
    }
  }
  std::string text;
};

class RecentFiles : public Keepers {
 protected:
  void SetUp() override {
    list_.SetIniFile(path_);
    list_.SetMenuItem(&menu_);
  }
  /// What the next start of the program shows.
  std::string ShownLater() {
    menu_.text = "nothing";
    list_.GetMRUList();
    return menu_.text;
  }
  void Holds(const std::string& lines) {
    start::test::WriteFile(platform::ToPath(path_), "[MRU List]\n" + lines);
  }

  Menu menu_;
  CMruINI list_{ini_};
};

TEST_F(RecentFiles, AreTheFourLastOpened) {
  for (const char* file : {"a", "b", "c", "d", "e"}) list_.SetMRUList(file, std::string("tag ") + file);
  const std::string expected = "&1. e<tag e> &2. d<tag d> &3. c<tag c> &4. b<tag b> ";
  EXPECT_EQ(menu_.text, expected);
  EXPECT_EQ(ShownLater(), expected);
}

TEST_F(RecentFiles, HoldAFileOnceWhateverTheCase) {
  for (const char* file : {"C:\\Ärzte\\Log.mdb", "b", "c"}) list_.SetMRUList(file, "");
  list_.SetMRUList("c:\\ärzte\\LOG.MDB", "");
  EXPECT_EQ(ShownLater(), "&1. c:\\ärzte\\LOG.MDB<> &2. c<> &3. b<> ");
}

TEST_F(RecentFiles, CloseTheGapsOfAFileWrittenByHand) {
  Holds("MRU2=b\nMRUTAG2=tag b\nMRU4=d\n");
  EXPECT_EQ(ShownLater(), "&1. b<tag b> &2. d<> ");
  list_.SetMRUList("a", "");
  EXPECT_EQ(ShownLater(), "&1. a<> &2. b<tag b> &3. d<> ") << "no file twice";
}

TEST_F(RecentFiles, LeaveOutWhatTheIniFileWouldCut) {
  list_.SetMRUList("a", "");
  std::string longest = "/";
  while (longest.size() < 255 + 254) longest += "ü";
  list_.SetMRUList(longest, "");
  EXPECT_EQ(ShownLater(), "&1. " + longest + "<> &2. a<> ");
  list_.SetMRUList(longest + "ü", "");
  list_.SetMRUList("zwei\nZeilen", "");
  list_.SetMRUList("", "");
  EXPECT_EQ(menu_.text, "&1. " + longest + "<> &2. a<> ");
  EXPECT_EQ(ShownLater(), menu_.text);
}

TEST_F(RecentFiles, FollowTheirSettings) {
  list_.SetPrefix("Datei");
  list_.SetTagPrefix("");
  list_.SetSection("Zuletzt");
  list_.SetMaxMRUItems(2);
  for (const char* file : {"a", "b", "c"}) list_.SetMRUList(file, "tag");
  EXPECT_EQ(ShownLater(), "&1. c<> &2. b<> ");
  EXPECT_EQ(ini_.ReadString("Zuletzt", "Datei2", path_), "b");
  list_.SetMaxMRUItems(-1);
  list_.SetMRUList("d", "");
  EXPECT_EQ(menu_.text, "");
  EXPECT_EQ(CMruINI(ini_).IniFile(), "test_app.ini");
}

}  // namespace
}  // namespace varnlog::app
