#include "start/IniText.h"

#include "platform/CodePage.h"

namespace varnlog::start {

namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsAscii(std::string_view text) {
  return platform::AsciiPrefix(text) == text.size();
}

bool SameName(std::string_view a, std::string_view b) {
  if (a == b) return true;
  // Most names that differ do so in length; only letters beyond A to Z may take more bytes in the other case.
  if (a.size() != b.size() && IsAscii(a) && IsAscii(b)) return false;
  return platform::UpperCase(a) == platform::UpperCase(b);
}

bool IsQuoted(std::string_view value) {
  return value.size() >= 2 && value.front() == value.back() &&
         (value.front() == '"' || value.front() == '\'');
}

std::string_view Unquoted(std::string_view value) {
  return IsQuoted(value) ? value.substr(1, value.size() - 2) : value;
}

/// Walks the lines of a file and knows where each begins and ends, its line break left out.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  bool Next() {
    if (next_ >= text_.size()) return false;
    begin_ = next_;
    const auto newline = text_.find('\n', begin_);
    end_ = newline == std::string_view::npos ? text_.size() : newline;
    next_ = end_ + 1;
    while (end_ > begin_ && text_[end_ - 1] == '\r') --end_;
    return true;
  }

  [[nodiscard]] std::string_view Line() const { return text_.substr(begin_, end_ - begin_); }
  [[nodiscard]] std::size_t begin() const { return begin_; }
  [[nodiscard]] std::size_t end() const { return end_; }

 private:
  std::string_view text_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t next_ = 0;
};

/// The name in a "[name]" line. A name may hold brackets itself, as a data file's path may, so the last one
/// ends it.
std::optional<std::string_view> SectionName(std::string_view line) {
  const std::string_view trimmed = Trimmed(line);
  if (!trimmed.starts_with('[')) return std::nullopt;
  const auto close = trimmed.rfind(']');
  if (close == std::string_view::npos) return std::nullopt;
  return Trimmed(trimmed.substr(1, close - 1));
}

/// Where the value of a key stands, or where a new line for it belongs.
struct Place {
  std::optional<std::string_view> value;
  std::size_t lineBegin = 0;
  std::size_t lineEnd = 0;
  std::optional<std::size_t> sectionEnd;  // behind the last line of the section that is not blank
};

/// `section` and `key` without blanks around them.
Place FindPlace(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inSection = false;
  for (Lines lines(text); lines.Next();) {
    const std::string_view line = lines.Line();
    if (const auto name = SectionName(line)) {
      inSection = SameName(*name, section);
      if (inSection && !place.sectionEnd) place.sectionEnd = lines.end();
      continue;
    }
    if (!inSection || Trimmed(line).empty()) continue;
    place.sectionEnd = lines.end();
    const auto equals = line.find('=');
    if (equals == line.npos || !SameName(Trimmed(line.substr(0, equals)), key)) continue;
    place.value = Trimmed(line.substr(equals + 1));
    place.lineBegin = lines.begin();
    place.lineEnd = lines.end();
    return place;
  }
  return place;
}

bool HasLineBreak(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) != text.npos;
}

bool CanBeSection(std::string_view name) {
  return !name.empty() && !HasLineBreak(name);
}

/// A name that would be read as a comment or as a section is none for a key.
bool CanBeKey(std::string_view name) {
  return !name.empty() && !HasLineBreak(name) && name.find('=') == name.npos && name.front() != ';' &&
         name.front() != '[';
}

/// A value that would lose blanks or quotes when it is read gets a pair of quotes around it.
std::string Protected(std::string_view value) {
  if (value == Trimmed(value) && !IsQuoted(value)) return std::string(value);
  return '"' + std::string(value) + '"';
}

}  // namespace

std::optional<std::string> FindIniValue(std::string_view text, std::string_view section,
                                        std::string_view key) {
  const Place place = FindPlace(text, Trimmed(section), Trimmed(key));
  if (!place.value) return std::nullopt;
  const std::string_view value = Unquoted(*place.value);
  return std::string(value.substr(0, value.find('\0')));
}

std::optional<std::string> WithIniValue(std::string_view text, std::string_view section, std::string_view key,
                                        std::string_view value) {
  section = Trimmed(section);
  key = Trimmed(key);
  if (!CanBeSection(section) || !CanBeKey(key) || HasLineBreak(value)) return std::nullopt;
  const std::string newline = text.empty() || text.find("\r\n") != text.npos ? "\r\n" : "\n";
  const std::string line = std::string(key) + "=" + Protected(value);
  const Place place = FindPlace(text, section, key);
  std::string result(text);
  if (place.value) return result.replace(place.lineBegin, place.lineEnd - place.lineBegin, line);
  if (place.sectionEnd) return result.insert(*place.sectionEnd, newline + line);
  if (!result.empty() && !result.ends_with('\n')) result += newline;
  return result.append("[").append(section).append("]").append(newline).append(line).append(newline);
}

}  // namespace varnlog::start
