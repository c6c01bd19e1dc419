#include <gtest/gtest.h>

#include "logview/CEdits.h"

namespace varnlog::logview {
namespace {

std::vector<std::string> Keys(const CEdits& edits) {
  std::vector<std::string> keys;
  for (const CEdit& edit : edits) keys.push_back(edit.Key());
  return keys;
}

TEST(CEdits, KeepsTheOrderAndEachFieldOfARowOnce) {
  CEdits edits;
  EXPECT_TRUE(edits.Add({"7", "tXrayBEdVolt"}));
  EXPECT_TRUE(edits.Add({"7", "tXrayBEdCur"}));
  EXPECT_TRUE(edits.Add({"3", "tXrayBEdVolt"}));
  EXPECT_FALSE(edits.Add({"7", "tXrayBEdVolt"}));
  EXPECT_EQ(Keys(edits), (std::vector<std::string>{"7,tXrayBEdVolt", "7,tXrayBEdCur", "3,tXrayBEdVolt"}));
  EXPECT_EQ(edits.Item(1).Field, "tXrayBEdCur");
  EXPECT_TRUE(edits.Contains("3,tXrayBEdVolt"));
  EXPECT_FALSE(edits.Contains("3,tXrayBEdCur"));
}

TEST(CEdits, AnEntryThatWasTakenOutCanBeAddedAgain) {
  CEdits edits;
  edits.Add({"1", "a"});
  edits.Add({"2", "b"});
  edits.Add({"3", "c"});
  EXPECT_TRUE(edits.Remove("2,b"));
  EXPECT_FALSE(edits.Remove("2,b"));
  edits.RemoveFirst(1);
  EXPECT_EQ(Keys(edits), std::vector<std::string>{"3,c"});
  EXPECT_TRUE(edits.Add({"1", "a"}));
  edits.RemoveFirst(5);
  EXPECT_EQ(edits.Count(), 0U);
  EXPECT_TRUE(edits.Add({"3", "c"}));
  edits.Clear();
  EXPECT_TRUE(edits.Add({"3", "c"}));
}

}  // namespace
}  // namespace varnlog::logview
