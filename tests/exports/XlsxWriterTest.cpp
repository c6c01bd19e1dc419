#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exports/XlsxWriter.h"
#include "exports/ZipDirectory.h"
#include "tests/support/TestFolder.h"

namespace varnlog::exports {
namespace {

TEST(XlsxWriter, GoesOnOnAnotherSheetWhereOneIsFull) {
  const test::TestFolder folder;
  const auto file = folder / "Aufnahmen.xlsx";
  XlsxWriter writer(file,
                    {.sheetName = "Alle [*] Aufnahmen/Снимки", .infoName = "Angaben", .rowsPerSheet = 2});
  writer.Begin({"Nr."});
  for (int row = 1; row <= 5; ++row) writer.Add({{.text = std::to_string(row), .kind = Cell::Kind::kNumber}});
  writer.End();
  std::vector<std::string> sheets;
  for (const auto& [name, size] : ListArchive(file)) {
    if (name.starts_with("xl/worksheets/")) sheets.push_back(name);
  }
  EXPECT_THAT(sheets, testing::ElementsAre("xl/worksheets/sheet1.xml", "xl/worksheets/sheet2.xml",
                                           "xl/worksheets/sheet3.xml", "xl/worksheets/sheet4.xml"));
}

TEST(XlsxWriter, SaysWhyItCannotWrite) {
  const test::TestFolder folder;
  EXPECT_THROW(
      {
        XlsxWriter writer(folder / "gone" / "x.xlsx", {.sheetName = "A", .infoName = "B"});
        writer.Begin({"Nr."});
        writer.End();
      },
      WorkbookError);
}

}  // namespace
}  // namespace varnlog::exports
