#include <vector>

#include <gtest/gtest.h>

#include "ui/GridColors.h"

namespace varnlog::ui::test {
namespace {

QPalette DarkPalette() {
  QPalette palette;
  palette.setColor(QPalette::Base, QColor(25, 25, 25));
  palette.setColor(QPalette::Text, QColor(240, 240, 240));
  return palette;
}

TEST(GridColors, StoredColoursAreBlueGreenRedOrASystemNumber) {
  EXPECT_EQ(ColorFromStored(0xFF0000), QColor(0, 0, 255));
  EXPECT_EQ(ColorFromStored(65535), QColor(255, 255, 0));
  EXPECT_EQ(ColorFromStored(0), QColor(0, 0, 0));
  EXPECT_TRUE(ColorFromStored(0x80000013).isValid());
  EXPECT_FALSE(ColorFromStored(0x80000063).isValid()) << "no such system colour: the grid's own is used";
}

TEST(GridColors, ContrastIsThatOfTheEye) {
  EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21.0, 0.01);
  EXPECT_NEAR(Contrast(Qt::red, Qt::red), 1.0, 0.01);
}

TEST(GridColors, TheGivenColoursAreUsedAsTheyAre) {
  const GridColors colors = GridColors::Default();
  const QPalette light(Qt::white);
  EXPECT_EQ(ColorsOf(CellState::kEdit, colors, light).fore, QColor(0, 0, 255));
  EXPECT_EQ(ColorsOf(CellState::kEdit, colors, light).back, QColor(255, 255, 255));
  EXPECT_EQ(ColorsOf(CellState::kPending, colors, light).fore, QColor(0, 0, 255));
  EXPECT_EQ(ColorsOf(CellState::kLocked, colors, light).fore, QColor(0, 0, 0));
  EXPECT_EQ(ColorsOf(CellState::kNoneEdit, colors, light).back, QColor(255, 255, 0));
}

TEST(GridColors, OnlyConfiguredColoursAreBrightOnADarkDesktop) {
  GridColors colors = GridColors::Default();
  EXPECT_EQ(ColorsOf(CellState::kPlain, colors, DarkPalette()).back, QColor(25, 25, 25));
  for (const CellState state : {CellState::kEdit, CellState::kLocked, CellState::kNoneEdit}) {
    EXPECT_LT(ColorsOf(state, colors, DarkPalette()).back.lightness(), 80);
  }
  colors.noneEditBack = QColor(255, 200, 0);
  colors.editFore = QColor(200, 0, 0);
  EXPECT_EQ(ColorsOf(CellState::kNoneEdit, colors, DarkPalette()).back, QColor(255, 200, 0));
  EXPECT_EQ(ColorsOf(CellState::kEdit, colors, DarkPalette()).fore, QColor(200, 0, 0));
  EXPECT_EQ(ColorsOf(CellState::kEdit, colors, DarkPalette()).back, QColor(255, 255, 255))
      << "they are a pair";
}

TEST(GridColors, LockedCellsStandOutFromOpenOnesOnEveryDarkDesktop) {
  for (const QColor base :
       {QColor(0, 0, 0), QColor(25, 25, 25), QColor(0x3d, 0x3d, 0x42), QColor(70, 70, 74)}) {
    QPalette palette = DarkPalette();
    palette.setColor(QPalette::Base, base);
    const GridColors colors = GridColors::Default();
    EXPECT_GE(Contrast(ColorsOf(CellState::kLocked, colors, palette).back,
                       ColorsOf(CellState::kEdit, colors, palette).back),
              1.25)
        << base.name().toStdString();
  }
}

TEST(GridColors, EveryCellCanBeReadInEveryTheme) {
  std::vector<GridColors> configured(1, GridColors::Default());
  for (const QColor back : {QColor(0, 0, 0), QColor(40, 40, 90), QColor(255, 255, 255), QColor(0, 0, 255)}) {
    GridColors colors = GridColors::Default();
    colors.lockedBack = colors.editBack = colors.noneEditBack = back;
    configured.push_back(colors);
  }
  for (const QPalette& palette : {QPalette(Qt::white), DarkPalette()}) {
    for (const GridColors& colors : configured) {
      for (const CellState state :
           {CellState::kPlain, CellState::kEdit, CellState::kLocked, CellState::kNoneEdit}) {
        const ColorPair pair = ColorsOf(state, colors, palette);
        EXPECT_GE(Contrast(pair.fore, pair.back), 3.0)
            << pair.fore.name().toStdString() << " on " << pair.back.name().toStdString();
      }
    }
  }
}

}  // namespace
}  // namespace varnlog::ui::test
