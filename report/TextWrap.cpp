#include "report/TextWrap.h"

#include <algorithm>

#include "platform/CodePage.h"

namespace varnlog::report {

namespace {

constexpr std::string_view kEllipsis = "\u2026";

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Belongs to the character before it: accents, vowel points, joiners, skin tones.
bool Attaches(char32_t c) {
  return (c >= 0x0300 && c <= 0x036F) || (c >= 0x0591 && c <= 0x05C7) || (c >= 0x064B && c <= 0x065F) ||
         (c >= 0x200C && c <= 0x200F) || (c >= 0x20D0 && c <= 0x20FF) || (c >= 0xFE00 && c <= 0xFE0F) ||
         (c >= 0x1F3FB && c <= 0x1F3FF);
}

/// The bytes of the first character with all that belongs to it. `text` is not empty.
std::size_t FirstCharacter(std::string_view text) {
  std::string_view rest = text;
  (void)platform::NextCharacter(rest);
  while (!rest.empty()) {
    std::string_view behind = rest;
    const auto next = platform::NextCharacter(behind);
    if (!next || !Attaches(*next)) break;
    rest = behind;
  }
  return text.size() - rest.size();
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// The bytes up to the next place behind `from` where a line may end.
std::size_t NextBreak(std::string_view text, std::size_t from) {
  for (std::size_t i = from; i + 1 < text.size(); ++i) {
    const bool nextIsDigit = text[i + 1] >= '0' && text[i + 1] <= '9';
    // A hyphen before a digit is inside a date or a number.
    if (text[i] == ' ' || ((text[i] == '-' || text[i] == '/') && !nextIsDigit)) return i + 1;
  }
  return text.size();
}

class Wrapper {
 public:
  Wrapper(const TextRoom& room, const TextMetrics& metrics) : room_(room), metrics_(metrics) {}

  std::vector<std::string> Wrap(std::string_view text) {
    SplitIntoParagraphs(text);
    for (std::size_t i = 0; i < paragraphs_.size(); ++i) {
      std::string_view rest = paragraphs_[i];
      const bool isLast = i + 1 == paragraphs_.size();
      while (!rest.empty()) {
        if (IsLastLine()) {
          lines_.push_back(isLast && Fits(rest) ? std::string(rest) : Shortened(rest));
          return std::move(lines_);
        }
        const std::string_view line = FirstLine(rest);
        lines_.emplace_back(WithoutTrailingBlanks(line));
        rest = WithoutLeadingBlanks(rest.substr(line.size()));
      }
    }
    if (lines_.empty()) lines_.emplace_back();
    return std::move(lines_);
  }

 private:
  void SplitIntoParagraphs(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
      std::string paragraph(text.substr(0, end));
      std::ranges::replace_if(paragraph, IsControl, ' ');
      paragraph = WithoutTrailingBlanks(WithoutLeadingBlanks(paragraph));
      if (!paragraph.empty()) paragraphs_.push_back(std::move(paragraph));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
  }

  [[nodiscard]] bool IsLastLine() const { return static_cast<int>(lines_.size()) + 1 >= room_.lines; }

  [[nodiscard]] bool Fits(std::string_view text) const {
    return metrics_.Width(text, room_.font) <= room_.width;
  }

  [[nodiscard]] std::string_view FirstLine(std::string_view text) const {
    std::size_t length = 0;
    while (length < text.size()) {
      const std::size_t next = NextBreak(text, length);
      if (!Fits(WithoutTrailingBlanks(text.substr(0, next)))) break;
      length = next;
    }
    return text.substr(0, length > 0 ? length : FittingCharacters(text, {}));
  }

  /// Bytes of the characters that fit together with `ending`; at least one character without one.
  [[nodiscard]] std::size_t FittingCharacters(std::string_view text, std::string_view ending) const {
    std::size_t length = ending.empty() ? FirstCharacter(text) : 0;
    std::string candidate;
    while (length < text.size()) {
      const std::size_t next = length + FirstCharacter(text.substr(length));
      candidate.assign(text.substr(0, next)).append(ending);
      if (!Fits(candidate)) break;
      length = next;
    }
    return length;
  }

  [[nodiscard]] std::string Shortened(std::string_view text) const {
    std::string line(WithoutTrailingBlanks(text.substr(0, FittingCharacters(text, kEllipsis))));
    return line.append(kEllipsis);
  }

  const TextRoom& room_;
  const TextMetrics& metrics_;
  std::vector<std::string> paragraphs_;
  std::vector<std::string> lines_;
};

}  // namespace

bool FitsOneLine(std::string_view text, const TextRoom& room, const TextMetrics& metrics) {
  return std::ranges::none_of(text, IsControl) && metrics.Width(text, room.font) <= room.width;
}

std::vector<std::string> WrapText(std::string_view text, const TextRoom& room, const TextMetrics& metrics) {
  return Wrapper(room, metrics).Wrap(text);
}

}  // namespace varnlog::report
