#include "ui/QtTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include "core/Languages.h"
#include "ui/QtText.h"

namespace varnlog::ui {

void TranslateQt(QTranslator& translator, std::string_view language) {
  const core::LanguageName* const found = core::FindLanguage(language);
  if (found == nullptr) return;
  if (translator.load(QStringLiteral("qtbase_") + ToQString(found->tag),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QCoreApplication::installTranslator(&translator);
  }
}

}  // namespace varnlog::ui
