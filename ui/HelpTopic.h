#pragma once

#include <string_view>

#include <QString>
#include <QVariant>
#include <QWidget>

#include "ui/QtText.h"

namespace varnlog::ui {

/// What F1 in a window is about when its name does not say: the key of one of its texts.
inline void SetHelpTopic(QWidget& window, std::string_view textKey) {
  window.setProperty("helpTopic", ToQString(textKey));
}
[[nodiscard]] inline std::string HelpTopicOf(const QWidget& window) {
  return FromQString(window.property("helpTopic").toString());
}

}  // namespace varnlog::ui
