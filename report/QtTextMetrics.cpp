#include "report/QtTextMetrics.h"

#include <algorithm>
#include <cmath>

#include <QString>
#include <QStringList>

#include "platform/CodePage.h"

namespace varnlog::report {

namespace {

// First bytes of UTF-8 characters.
constexpr unsigned char kCombiningAccents = 0xCC;  // U+0300 on
constexpr unsigned char kAsciiEnd = 0x80;
constexpr unsigned char kHebrew = 0xD6;  // U+0590 is in its second half

bool HasByteFrom(std::string_view text, unsigned char least) {
  return std::ranges::any_of(text, [least](char c) { return static_cast<unsigned char>(c) >= least; });
}

QString FromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool IsCombiningAccent(char32_t c) {
  return c >= 0x0300 && c <= 0x036F;
}

}  // namespace

std::vector<QFont> MakeFonts(const ReportDesign& design) {
  std::vector<QFont> fonts;
  for (const FontDesign& described : design.fonts) {
    QStringList families;
    for (const QString& family : FromUtf8(described.family).split(QLatin1Char(',')))
      families.append(family.trimmed());
    QFont font;
    font.setFamilies(families);
    font.setStyleHint(QFont::Serif);
    font.setPixelSize(static_cast<int>(std::lround(described.size * kFontUnitsPerPoint)));
    font.setBold(described.bold);
    font.setKerning(false);
    font.setHintingPreference(QFont::PreferNoHinting);
    fonts.push_back(font);
  }
  return fonts;
}

QString ToDrawnText(std::string_view text) {
  const QString drawn = FromUtf8(text);
  return HasByteFrom(text, kCombiningAccents) ? drawn.normalized(QString::NormalizationForm_C) : drawn;
}

QtTextMetrics::QtTextMetrics(const std::vector<QFont>& fonts) {
  fonts_.reserve(fonts.size());
  for (const QFont& font : fonts) fonts_.push_back(Font{QFontMetricsF(font)});
}

double QtTextMetrics::Width(std::string_view text, int font) const {
  const Font& measured = fonts_[static_cast<std::size_t>(font)];
  double units = 0;
  for (std::string_view rest = text; !rest.empty();) {
    if (const auto byte = static_cast<unsigned char>(rest.front()); byte < kAsciiEnd) {
      units += LetterWidth(measured, byte);
      rest.remove_prefix(1);
      continue;
    }
    const auto letter = platform::NextCharacter(rest);
    if (!letter || *letter >= kRemembered || IsCombiningAccent(*letter))
      return measured.metrics.horizontalAdvance(ToDrawnText(text)) / kFontUnitsPerPoint;
    units += LetterWidth(measured, *letter);
  }
  return units / kFontUnitsPerPoint;
}

bool QtTextMetrics::IsRightToLeft(std::string_view text) const {
  return HasByteFrom(text, kHebrew) && FromUtf8(text).isRightToLeft();
}

}  // namespace varnlog::report
