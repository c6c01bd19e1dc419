#include "ui/QtTexts.h"

#include <algorithm>
#include <array>

#include <QCoreApplication>
#include <QLibraryInfo>

namespace varnlog::ui {

namespace {

struct QtLanguage {
  std::string_view ours;
  const char* qts;
};

constexpr std::array<QtLanguage, 7> kLanguages = {
    {{"D", "de"}, {"GB", "en"}, {"E", "es"}, {"I", "it"}, {"F", "fr"}, {"NL", "nl"}, {"CYR", "ru"}}};

}  // namespace

void TranslateQt(QTranslator& translator, std::string_view language) {
  const auto* found = std::find_if(kLanguages.begin(), kLanguages.end(),
                                   [language](const QtLanguage& each) { return each.ours == language; });
  if (found == kLanguages.end()) return;
  if (translator.load(QStringLiteral("qtbase_") + QLatin1String(found->qts),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QCoreApplication::installTranslator(&translator);
  }
}

}  // namespace varnlog::ui
