#pragma once

#include <string>
#include <string_view>

#include <QString>
#include <QTextDocument>

#include "core/TextLookup.h"

namespace varnlog::ui {

/// A text of the program (UTF-8, line breaks as carriage returns) for a widget.
[[nodiscard]] inline QString ToQString(std::string_view text) {
  QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  if (text.find('\r') == text.npos) return result;
  result.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  return result.replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

[[nodiscard]] inline std::string FromQString(const QString& text) {
  return text.toStdString();
}

/// The text of a key for a widget.
[[nodiscard]] inline QString Caption(const core::TextLookup& texts, core::TextKey key) {
  return ToQString(texts.GetText(key));
}

/// The same with the text's placeholders filled.
[[nodiscard]] inline QString Caption(const core::TextLookup& texts, core::TextKey key,
                                     const core::Placeholders& values) {
  return ToQString(core::FilledText(texts, key, values));
}

/// A caption without its accelerator and dots, as a name for screen readers.
[[nodiscard]] inline QString PlainCaption(const core::TextLookup& texts, core::TextKey key) {
  QString text = Caption(texts, key);
  text.remove(QLatin1Char('&'));
  while (text.endsWith(QLatin1Char('.')) || text.endsWith(QLatin1Char(':'))) text.chop(1);
  return text;
}

/// For tooltips with names, comments or paths in them: what looks like mark-up is shown, not obeyed.
[[nodiscard]] inline QString PlainToolTip(const QString& text) {
  return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

}  // namespace varnlog::ui
