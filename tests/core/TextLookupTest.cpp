#include <gtest/gtest.h>

#include "core/TextLookup.h"
#include "core/UserDialog.h"

namespace varnlog::core {
namespace {

TEST(Placeholder, IsReplacedWhereverItStands) {
  struct Row {
    const char* text;
    const char* value;
    const char* all;
    const char* first;
  };
  const Row rows[] = {
      {"$strFile$ und $STRFILE$", "a.mdb", "a.mdb und a.mdb", "a.mdb und $STRFILE$"},
      {"Öffnen von $strFile$: $strError$", "Ä", "Öffnen von Ä: $strError$", "Öffnen von Ä: $strError$"},
      {"strFile $strFile strFile$", "x", "strFile $strFile strFile$", "strFile $strFile strFile$"},
      {"$strFile$", "", "", ""},
      {"", "x", "", ""},
      {"$$strFile$$", "x", "$x$", "$x$"},
      // A replacement may complete another marker.
      {"$str$strFile$File$", "", "", "$strFile$"},
      // A file may be called like the marker.
      {"<$strFile$> <$strFile$>", "/x/$strFILE$.mdb", "</x/$strFILE$.mdb> </x/$strFILE$.mdb>",
       "</x/$strFILE$.mdb> <$strFile$>"},
      {"$strFile$", "$strFile$", "$strFile$", "$strFile$"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ReplacePlaceholder(row.text, "strFile", row.value), row.all) << row.text;
    EXPECT_EQ(ReplaceFirstPlaceholder(row.text, "strFile", row.value), row.first) << row.text;
  }
}

class KeyTexts final : public TextLookup {
 public:
  [[nodiscard]] std::string GetText(TextKey key) const override { return std::string(key.name()); }
};

class Listener final : public UserDialog {
 public:
  MessageAnswer Show(const Message& message) override {
    shown = message;
    return MessageAnswer::kNo;
  }
  void Beep() override {}
  Message shown;
};

TEST(MsgBox, HasTheProgramsTitleUnlessOneIsGiven) {
  Listener user;
  EXPECT_EQ(MsgBox(user, KeyTexts(), "Frage?", MessageIcon::kQuestion, MessageButtons::kYesNo),
            MessageAnswer::kNo);
  EXPECT_EQ(user.shown.text, "Frage?");
  EXPECT_EQ(user.shown.title, "GL_TITLE");
  EXPECT_EQ(user.shown.icon, MessageIcon::kQuestion);
  EXPECT_EQ(user.shown.buttons, MessageButtons::kYesNo);
  MsgBox(user, KeyTexts(), "Hinweis", MessageIcon::kInformation, MessageButtons::kOk, "Titel");
  EXPECT_EQ(user.shown.title, "Titel");
}

}  // namespace
}  // namespace varnlog::core
