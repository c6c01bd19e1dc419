#include "db/dao/sql/LikePattern.h"

#include <algorithm>
#include <cstddef>

#include "db/dao/text/Collation.h"
#include "platform/Ascii.h"
#include "platform/CodePage.h"
#include "platform/Utf8.h"

namespace varnlog::dao {
namespace {

/// The character at `position` of well-formed UTF-8, which FoldCase makes of everything.
char32_t Decode(std::string_view text, std::size_t& position) {
  return platform::DecodeUtf8(text, position).value_or(U'\0');
}

std::string Encode(char32_t character) {
  std::string text;
  platform::AppendCharacter(character, text);
  return text;
}

/// Whether each character stands for itself: none belongs to the one before it, and none is left out.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c < '\x7F'; });
}

char32_t Lower(char plain) {
  return static_cast<unsigned char>(platform::ascii::Lower(plain));
}

bool IsDigit(char32_t c) {
  return c >= U'0' && c <= U'9';
}

/// Both ends and the character in one alphabet whose codes are in order.
bool IsPlainRange(char32_t first, char32_t last, char32_t c) {
  const auto isLetter = [](char32_t x) { return x >= U'a' && x <= U'z'; };
  return (IsDigit(first) && IsDigit(last) && IsDigit(c)) ||
         (isLetter(first) && isLetter(last) && isLetter(c));
}

bool InRange(char32_t first, char32_t last, char32_t c) {
  if (first == last) return c == first;
  if (IsPlainRange(first, last, c)) return first <= c && c <= last;
  const Collation& collation = Collation::Instance();
  const std::string text = Encode(c);
  return collation.Compare(Encode(first), text) <= 0 && collation.Compare(text, Encode(last)) <= 0;
}

}  // namespace

LikePattern::LikePattern(std::string_view pattern) {
  const std::string folded = FoldCase(pattern);
  for (std::size_t position = 0; position < folded.size();) {
    const char c = folded[position];
    const std::size_t close = c == '[' ? folded.find(']', position + 1) : std::string::npos;
    if (close != std::string::npos) {
      AddSet(std::string_view(folded).substr(position + 1, close - position - 1));
      position = close + 1;
      continue;
    }
    Element element{Kind::kLiteral, Decode(folded, position), false, {}};
    if (c == '*') element.kind = Kind::kAnyText;
    if (c == '?') element.kind = Kind::kAnyCharacter;
    if (c == '#') element.kind = Kind::kDigit;
    // Stars in a row mean one, and would each cost a pass over the text.
    const bool repeats = c == '*' && !elements_.empty() && elements_.back().kind == Kind::kAnyText;
    if (!repeats) elements_.push_back(std::move(element));
  }
}

void LikePattern::AddSet(std::string_view content) {
  Element set{Kind::kSet, 0, false, {}};
  if (content.empty()) return;
  std::size_t position = 0;
  if (content.size() > 1 && content.front() == '!') {
    set.negated = true;
    position = 1;
  }
  while (position < content.size()) {
    const char32_t first = Decode(content, position);
    char32_t last = first;
    // A hyphen at either end of the set is one of its characters.
    if (position + 1 < content.size() && content[position] == '-') {
      ++position;
      last = Decode(content, position);
    }
    set.ranges.push_back({first, last});
  }
  elements_.push_back(std::move(set));
}

bool LikePattern::MatchesOne(const Element& element, char32_t character) {
  switch (element.kind) {
    case Kind::kLiteral:
      return element.literal == character;
    case Kind::kDigit:
      return IsDigit(character);
    case Kind::kSet:
      return element.negated !=
             std::any_of(element.ranges.begin(), element.ranges.end(), [character](const Range& range) {
               return InRange(range.first, range.last, character);
             });
    default:
      return true;
  }
}

template <typename Next>
bool LikePattern::Walk(std::string_view text, Next next) const {
  // Only the last star seen can have to give back characters: whatever an earlier one could take instead, the
  // later one can take as well.
  const std::size_t none = elements_.size();
  std::size_t star = none;
  std::size_t starEnd = 0;
  std::size_t element = 0;
  std::size_t position = 0;
  while (position < text.size()) {
    if (element < elements_.size() && elements_[element].kind == Kind::kAnyText) {
      if (element + 1 == elements_.size()) return true;
      star = element++;
      starEnd = position;
      continue;
    }
    std::size_t behind = position;
    const char32_t character = next(behind);
    if (element < elements_.size() && MatchesOne(elements_[element], character)) {
      ++element;
      position = behind;
    } else if (star != none) {
      (void)next(starEnd);
      const Element& wanted = elements_[star + 1];
      while (wanted.kind == Kind::kLiteral && starEnd < text.size()) {
        std::size_t after = starEnd;
        if (next(after) == wanted.literal) break;
        starEnd = after;
      }
      position = starEnd;
      element = star + 1;
    } else {
      return false;
    }
  }
  while (element < elements_.size() && elements_[element].kind == Kind::kAnyText) ++element;
  return element == elements_.size();
}

bool LikePattern::Matches(std::string_view text) const {
  // Most texts need no copy, and of those most need only a look at their first character.
  if (elements_.size() == 1 && elements_.front().kind == Kind::kAnyText) return true;
  if (FailsAtOnce(text)) return false;
  if (IsPlain(text)) return Walk(text, [text](std::size_t& position) { return Lower(text[position++]); });
  const std::string folded = FoldCase(text);
  return Walk(folded, [&folded](std::size_t& position) { return Decode(folded, position); });
}

bool LikePattern::FailsAtOnce(std::string_view text) const {
  if (elements_.empty() || elements_.front().kind != Kind::kLiteral || !IsPlain(text.substr(0, 2))) {
    return false;
  }
  return text.empty() || Lower(text.front()) != elements_.front().literal;
}

namespace {

void AppendEscaped(char32_t character, std::string& out) {
  constexpr std::string_view kSpecial = "\\^$.[]|()*+?{}-";
  const std::string text = Encode(character);
  if (text.size() == 1 && kSpecial.find(text.front()) != std::string_view::npos) out += '\\';
  out += text;
}

}  // namespace

// A range means what lies between its ends in the collation's order, so its characters are listed.
std::string LikePattern::SetExpression(const Element& set) {
  constexpr char32_t kFirst = U' ';
  constexpr char32_t kBehindLast = U'\u0530';  // behind the Cyrillic letters
  std::string members;
  for (char32_t c = kFirst; c < kBehindLast; ++c) {
    const bool isMember = std::ranges::any_of(
        set.ranges, [c](const Range& range) { return InRange(range.first, range.last, c); });
    if (isMember) AppendEscaped(c, members);
  }
  for (const Range& range : set.ranges)
    if (range.first == range.last && range.first >= kBehindLast) AppendEscaped(range.first, members);
  if (members.empty()) return set.negated ? "." : "[^\\s\\S]";
  return (set.negated ? "[^" : "[") + members + "]";
}

std::string LikePattern::RegularExpression() const {
  std::string expression = "^";
  for (const Element& element : elements_) {
    switch (element.kind) {
      case Kind::kAnyText:
        expression += ".*";
        break;
      case Kind::kAnyCharacter:
        expression += '.';
        break;
      case Kind::kDigit:
        expression += "[0-9]";
        break;
      case Kind::kLiteral:
        AppendEscaped(element.literal, expression);
        break;
      case Kind::kSet:
        expression += SetExpression(element);
    }
  }
  return expression + "$";
}

}  // namespace varnlog::dao
