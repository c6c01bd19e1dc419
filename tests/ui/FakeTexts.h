#pragma once

#include <map>
#include <string>

#include "core/TextLookup.h"

namespace varnlog::ui::test {

/// A few texts as the language database has them.
class FakeTexts final : public core::TextLookup {
 public:
  std::string GetText(core::TextKey key) const override {
    const auto found = texts.find(std::string(key.name()));
    return found == texts.end() ? std::string() : found->second;
  }

  std::map<std::string, std::string> texts = {{"GL_TITLE", "Röntgenkontrollbuch"},
                                              {"GL_OK", "OK"},
                                              {"GL_CANCEL", "Abbrechen"},
                                              {"GL_YES", "&Ja"},
                                              {"GL_NO", "&Nein"},
                                              {"AB_CAPTION", "Über"},
                                              {"AB_VERSION", "Version $strVersion$"},
                                              {"AB_TEXT", "Hält die Angaben fest.\rDruckt sie."},
                                              {"AB_LICENCES", "Bibliotheken und Lizenzen"},
                                              {"AB_LIBRARY", "Bibliothek"},
                                              {"AB_LICENCE", "Lizenz"}};
};

}  // namespace varnlog::ui::test
