#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/support/Table.h"
#include "tools/make_databases/TextTable.h"

namespace varnlog::tools {

namespace {

const std::string kHeading = "key\tD\tGB\tE\tI\tF\tNL\tCYR\n";

TEST(TextTableTest, ReadsAKeyAndSevenTextsALine) {
  const auto table = ReadTextTable(kHeading + "GL_TITLE\tBuch\tBook\tLibro\tLibro\tLivre\tBoek\tКнига\n");
  EXPECT_EQ(table.languages, (std::vector<std::string>{"D", "GB", "E", "I", "F", "NL", "CYR"}));
  ASSERT_EQ(table.lines.size(), 1U);
  EXPECT_EQ(table.lines[0].key, "GL_TITLE");
  EXPECT_EQ(table.lines[0].texts.back(), "Книга");
}

TEST(TextTableTest, NamesTheLineThatIsWrong) {
  const std::string good = "A_B\t1\t2\t3\t4\t5\t6\t7\n";
  for (const auto& [content, says] :
       Table<std::string, const char*>{{"", "line 1"},
                                       {"key\tD\tGB\n", "line 1"},
                                       {kHeading + good + "A_C\t1\t2\n", "line 3: 3 columns"},
                                       {kHeading + "A_B\t1\t2\t3\t4\t5\t6\t7\t8\n", "line 2: 9 columns"},
                                       {kHeading + "a_b\t1\t2\t3\t4\t5\t6\t7\n", "'a_b' is no key"},
                                       {kHeading + "A_B\t1\t\t3\t4\t5\t6\t7\n", "A_B has no text in GB"},
                                       {kHeading + good + good, "line 3: A_B is there already"},
                                       {kHeading + good + "\n" + good, "line 3"},
                                       {kHeading + "A_B\t1\t2\t3\t4\t5\t6\t\xff\n", "not UTF-8"}}) {
    try {
      static_cast<void>(ReadTextTable(content));
      ADD_FAILURE() << "accepted: " << content;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(says), std::string::npos)
          << error.what() << " for " << content;
    }
  }
}

}  // namespace
}  // namespace varnlog::tools
