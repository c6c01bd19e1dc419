#include <gtest/gtest.h>

#include "logview/CRGBColorINI.h"
#include "logview/CTDBGColumnsINI.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/support/Table.h"

namespace varnlog::logview {
namespace {

TEST(CRGBColorINI, ReadsColoursAndNeverOverflows) {
  constexpr Color kFallback = 0x80000013;
  const Table<const char*, Color> cases = {{"", kFallback},
                                           {"R=255;G=255;B=0", 0x00FFFF},
                                           {"R=1,G=2,B=3", 0x030201},
                                           {"R=1G=2B=3", 0x030201},
                                           {"B=3 G=2 R=1", 0x030201},
                                           {"R=255;G=255", kFallback},
                                           {"r=1;g=2;b=3", kFallback},
                                           {"R=999;G=0;B=0", 0x0000FF},
                                           {"R=0;G=0;B=99999999999999999999999999", 0xFF0000},
                                           {"R=;G=x;B=7", 0x070000},
                                           {"R=-5;G=0;B=0", 0x000000},
                                           {"red", kFallback}};
  FakeSettings settings;
  CRGBColorINI colors(settings);
  colors.SetIniFile("varnlog.ini");
  colors.SetSection("GridColors");
  for (const auto& [stored, expected] : cases) {
    settings.values[{"GridColors", "EditForeColor"}] = stored;
    EXPECT_EQ(colors.RestoreColor("EditForeColor", kFallback), expected) << stored;
  }
}

TEST(GridColors, ComeFromTheirOwnKeysOrAreTheDefaults) {
  FakeSettings settings;
  const auto loaded = [&] {
    const GridColors colors = LoadGridColors(settings, "varnlog.ini");
    return std::vector{colors.lockedBack, colors.lockedFore, colors.editFore, colors.editBack,
                       colors.noneEditBack};
  };
  EXPECT_EQ(loaded(), (std::vector<Color>{0x80000013, 0, 0xFF0000, 0xFFFFFF, 65535}));
  int red = 0;
  for (const char* key :
       {"LockedBackColor", "LockedForeColor", "EditForeColor", "EditBackColor", "NoneEditBackColor"})
    settings.values[{"GridColors", key}] = "R=" + std::to_string(++red) + ";G=0;B=0";
  EXPECT_EQ(loaded(), (std::vector<Color>{1, 2, 3, 4, 5}));
}

class FakeGrid final : public ColumnWidths {
 public:
  explicit FakeGrid(std::vector<int> widths) : widths_(std::move(widths)) {}
  [[nodiscard]] int ColumnCount() const override { return static_cast<int>(widths_.size()); }
  [[nodiscard]] int Width(int column) const override { return widths_.at(static_cast<std::size_t>(column)); }
  void SetWidth(int column, int width) override { widths_.at(static_cast<std::size_t>(column)) = width; }
  [[nodiscard]] const std::vector<int>& widths() const { return widths_; }

 private:
  std::vector<int> widths_;
};

class ColumnWidthsTest : public testing::Test {
 protected:
  ColumnWidthsTest() {
    columns_.SetIniFile("varnlog.ini");
    columns_.SetSection("GridColumns");
    columns_.SetKeyName("Widths");
  }

  std::vector<int> Restored(const std::string& stored, std::vector<int> widths) {
    FakeGrid grid(std::move(widths));
    columns_.SetTDBGrid(&grid);
    settings_.values[{"GridColumns", "Widths"}] = stored;
    columns_.RestoreColumns();
    columns_.SetTDBGrid(nullptr);
    return grid.widths();
  }

  FakeSettings settings_;
  CTDBGColumnsINI columns_{settings_};
};

TEST_F(ColumnWidthsTest, SavesOneEntryAColumnAndReadsItBack) {
  FakeGrid grid({600, 1200, 2400});
  columns_.SetTDBGrid(&grid);
  EXPECT_TRUE(columns_.SaveColumns());
  const std::string stored = settings_.values[{"GridColumns", "Widths"}];
  EXPECT_EQ(stored, "W0=600;W1=1200;W2=2400;");
  EXPECT_EQ(Restored(stored, {1, 2, 3}), (std::vector<int>{600, 1200, 2400}));
}

TEST_F(ColumnWidthsTest, RestoresWhatIsThereAndLeavesTheRest) {
  const std::vector<int> twelve(12, 5);
  std::vector<int> eleventhOnly = twelve;
  eleventhOnly[11] = 77;
  const Table<std::string, std::vector<int>, std::vector<int>> cases = {
      {"", {1, 2, 3}, {1, 2, 3}},
      {"W1=9;", {1, 2, 3}, {1, 9, 3}},
      {"W2=7;W0=8", {1, 2, 3}, {8, 2, 7}},
      {"W11=77;", twelve, eleventhOnly},
      {"W5=4;W1=9;W77=1;", {1, 2, 3}, {1, 9, 3}},
      {"w1=9;W1 =9;", {1, 2, 3}, {1, 2, 3}},
      {"W0=;W1=x;W2=-4;", {1, 2, 3}, {1, 2, 3}},
      {"W0=1000000;W1=99999999999999999999;W2=0;", {1, 2, 3}, {100'000, 100'000, 0}}};
  for (const auto& [stored, widths, expected] : cases)
    EXPECT_EQ(Restored(stored, widths), expected) << stored;
}

}  // namespace
}  // namespace varnlog::logview
