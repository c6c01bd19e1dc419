#pragma once

#include <string_view>

#include <QTranslator>

namespace varnlog::ui {

/// Makes Qt's own windows, such as the file dialog, speak one of the program's languages as long as
/// `translator` lives; they stay English where Qt's translations are not installed.
void TranslateQt(QTranslator& translator, std::string_view language);

}  // namespace varnlog::ui
