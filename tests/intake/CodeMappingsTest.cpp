#include <map>
#include <set>

#include <gtest/gtest.h>

#include "intake/CodeMappings.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/FakeToothScheme.h"
#include "tests/support/Table.h"

namespace varnlog::intake {
namespace {

const varnlog::test::FakeTexts kGerman({{"RC_PREGYES", "Ja"},
                                        {"RC_PREGNO", "Nein"},
                                        {"RC_PREGUNKNOWN", "Unbek."},
                                        {"RC_REPEAT", "Wiederholung"},
                                        {"RC_ND", "Nicht diagn."}});
const varnlog::test::FakeTexts kNoTexts(
    {{"RC_PREGYES", ""}, {"RC_PREGNO", ""}, {"RC_PREGUNKNOWN", ""}, {"RC_REPEAT", ""}, {"RC_ND", ""}});

const varnlog::test::FakeToothScheme kUS(true);
const varnlog::test::FakeToothScheme kFDI(false);

TEST(CodeMappingsTest, AnswersAnythingElseWithNothing) {
  for (const char* code : {"j", "n", "", " J", "JN", "wdh.", "N.D."}) {
    EXPECT_EQ(PregnancyCodeToText(code, kGerman), "") << code;
    EXPECT_EQ(RepeatCodeToText(code, kGerman), "") << code;
  }
  for (const char* text : {"ja", "Ja ", "", "J", "wiederholung", "perhaps"}) {
    EXPECT_EQ(PregnancyTextToCode(text, kGerman), "") << text;
    EXPECT_EQ(RepeatTextToCode(text, kGerman), "") << text;
  }
  EXPECT_EQ(PregnancyTextToCode("", kNoTexts), "");
  EXPECT_EQ(RepeatTextToCode("", kNoTexts), "");
}

TEST(CodeMappingsTest, ConvertsEveryToothThereAndBack) {
  std::set<std::string> shown;
  for (int quadrant = 1; quadrant <= 8; ++quadrant) {
    const int last = quadrant <= 4 ? 8 : 5;
    for (int tooth = 1; tooth <= last; ++tooth) {
      const std::string fdi = std::to_string(quadrant * 10 + tooth);
      const std::string us = ToothToDisplay(fdi, "XI", kUS);
      shown.insert(us);
      EXPECT_EQ(ToothFromDisplay(us, "xi", kUS), fdi) << us;
    }
  }
  std::set<std::string> expected;
  for (int i = 1; i <= 32; ++i) expected.insert(std::to_string(i));
  for (char c = 'A'; c <= 'T'; ++c) expected.insert(std::string(1, c));
  EXPECT_EQ(shown, expected);
}

TEST(CodeMappingsTest, ConvertsWholeCellsOnly) {
  const Table<const char*, const char*, const char*> rows = {
      {"48", "XI", "32"},     {"85", "XI", "T"},        {"85", "XS", "T"},        {"48", "XP", "48"},
      {"48", "XC", "48"},     {"48", "XV", "48"},       {"48", "", "48"},         {" 11 ", "XI", "8"},
      {" 99 ", "XI", " 99 "}, {"11 12", "XI", "11 12"}, {"11-12", "XI", "11-12"}, {"33", "XI", "22"},
      {"19", "XI", "19"},     {"49", "XI", "49"},       {"56", "XI", "56"},       {"U", "XI", "U"},
      {"", "XI", ""},         {"Pan 1", "XS", "Pan 1"}};
  for (const auto& [stored, type, shown] : rows) {
    EXPECT_EQ(ToothToDisplay(stored, type, kUS), shown) << stored << " " << type;
    EXPECT_EQ(ToothToDisplay(stored, type, kFDI), stored) << stored << " " << type;
  }
}

TEST(CodeMappingsTest, ReadsEnteredTeeth) {
  const Table<const char*, const char*> rows = {{"t", "85"},  {" A ", "55"},  {"a", "55"}, {"32", "48"},
                                                {"33", "33"}, {"0", "0"},     {"u", "u"},  {"1 2", "1 2"},
                                                {"", ""},     {" x ", " x "}, {"01", "01"}};
  for (const auto& [entered, stored] : rows) {
    EXPECT_EQ(ToothFromDisplay(entered, "XI", kUS), stored) << entered;
    EXPECT_EQ(ToothFromDisplay(entered, "XP", kUS), entered) << entered;
    EXPECT_EQ(ToothFromDisplay(entered, "XI", kFDI), entered) << entered;
  }
}

}  // namespace
}  // namespace varnlog::intake
