#pragma once

#include "tests/support/FakeTexts.h"

namespace varnlog::ui::test {

/// A few texts as the language database has them.
struct FakeTexts : varnlog::test::FakeTexts {
  FakeTexts()
      : varnlog::test::FakeTexts({{"GL_TITLE", "Röntgenkontrollbuch"},
                                  {"GL_OK", "OK"},
                                  {"GL_CANCEL", "Abbrechen"},
                                  {"GL_YES", "&Ja"},
                                  {"GL_NO", "&Nein"},
                                  {"AB_CAPTION", "Über"},
                                  {"AB_VERSION", "Version $strVersion$"},
                                  {"AB_TEXT", "Hält die Angaben fest.\rDruckt sie."},
                                  {"AB_LICENCES", "Bibliotheken und Lizenzen"},
                                  {"AB_LIBRARY", "Bibliothek"},
                                  {"AB_LICENCE", "Lizenz"}}) {}
};

}  // namespace varnlog::ui::test
