#include "db/dao/sql/JetSqlLexer.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "db/dao/EngineError.h"
#include "db/dao/sql/JetDateLiteral.h"
#include "platform/Ascii.h"
#include "platform/CodePage.h"

namespace varnlog::dao {
namespace {

using platform::ascii::IsDigit;
using platform::ascii::IsLetter;

/// Longer statements are refused before they are read: nothing in the program writes one near this.
constexpr std::size_t kLongestStatement = 65'536;

constexpr std::size_t kExcerptBefore = 24;
constexpr std::size_t kExcerptAfter = 40;

constexpr std::array<std::string_view, 21> kWords = {
    "SELECT", "DISTINCT", "FROM", "WHERE", "ORDER",   "BY",   "ASC",  "DESC",  "AS",  "AND", "OR",
    "NOT",    "LIKE",     "IN",   "IS",    "BETWEEN", "NULL", "TRUE", "FALSE", "YES", "NO"};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Any byte of a letter beyond ASCII counts as one of a name.
bool IsNameByte(char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool EqualsWord(std::string_view text, std::string_view upperWord) {
  return std::equal(text.begin(), text.end(), upperWord.begin(), upperWord.end(),
                    [](char c, char upper) { return platform::ascii::Upper(c) == upper; });
}

/// The statement around a place, on one line and short enough for a message box.
std::string Excerpt(std::string_view statement, std::size_t offset) {
  std::size_t begin = offset > kExcerptBefore ? offset - kExcerptBefore : 0;
  while (begin < offset && IsContinuation(statement[begin])) ++begin;
  std::size_t end = std::min(statement.size(), offset + kExcerptAfter);
  while (end > offset && end < statement.size() && IsContinuation(statement[end])) --end;
  std::string excerpt(statement.substr(begin, end - begin));
  const bool readable = platform::IsUtf8(excerpt);
  for (char& c : excerpt) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) c = ' ';
    if (!readable && byte >= 0x80) c = '?';
  }
  if (begin > 0) excerpt.insert(0, "...");
  if (end < statement.size()) excerpt += "...";
  return excerpt;
}

}  // namespace

JetSqlLexer::JetSqlLexer(std::string_view statement) : statement_(statement) {
  if (statement.size() > kLongestStatement) FailAt(0, "Query is too long");
  Advance();
}

Token JetSqlLexer::Take() {
  Token taken = std::move(token_);
  Advance();
  return taken;
}

bool JetSqlLexer::IsWord(std::string_view word) const {
  return token_.kind == TokenKind::kName && EqualsWord(token_.text, word);
}

bool JetSqlLexer::IsSymbol(std::string_view symbol) const {
  return token_.kind == TokenKind::kSymbol && token_.text == symbol;
}

bool JetSqlLexer::TakeWord(std::string_view word) {
  if (!IsWord(word)) return false;
  Advance();
  return true;
}

bool JetSqlLexer::TakeSymbol(std::string_view symbol) {
  if (!IsSymbol(symbol)) return false;
  Advance();
  return true;
}

void JetSqlLexer::ExpectWord(std::string_view word) {
  if (!TakeWord(word)) Fail("Syntax error (" + std::string(word) + " expected)");
}

void JetSqlLexer::ExpectSymbol(std::string_view symbol) {
  if (!TakeSymbol(symbol)) Fail();
}

bool JetSqlLexer::IsName() const {
  if (token_.kind == TokenKind::kBracketedName) return true;
  if (token_.kind != TokenKind::kName) return false;
  return std::none_of(kWords.begin(), kWords.end(),
                      [this](std::string_view word) { return EqualsWord(token_.text, word); });
}

void JetSqlLexer::Fail(std::string_view what) const {
  FailAt(token_.offset, what);
}

void JetSqlLexer::FailAt(std::size_t offset, std::string_view what) const {
  throw EngineError(ErrorNumber::kSyntaxError,
                    std::string(what) + " in query expression '" + Excerpt(statement_, offset) +
                        "', character " +
                        std::to_string(platform::CharacterCount(statement_.substr(0, offset)) + 1) + ".");
}

void JetSqlLexer::Advance() {
  while (position_ < statement_.size() && IsBlank(statement_[position_])) ++position_;
  token_ = Token{TokenKind::kEnd, position_, {}};
  if (position_ == statement_.size()) return;
  const char c = statement_[position_];
  if (c == '\'' || c == '"') {
    ScanText(c);
  } else if (c == '#') {
    ScanDate();
  } else if (c == '[') {
    ScanBracketed();
  } else if (IsDigit(c)) {
    ScanNumber();
  } else if (IsNameByte(c)) {
    ScanWord();
  } else {
    ScanSymbol();
  }
}

void JetSqlLexer::ScanWord() {
  while (position_ < statement_.size() && IsNameByte(statement_[position_])) ++position_;
  token_.kind = TokenKind::kName;
  token_.text = statement_.substr(token_.offset, position_ - token_.offset);
  if (!platform::IsUtf8(token_.text)) Fail("Invalid name");
}

void JetSqlLexer::ScanBracketed() {
  const std::size_t close = statement_.find(']', position_);
  if (close == std::string_view::npos) Fail("Invalid bracketing of name");
  token_.kind = TokenKind::kBracketedName;
  token_.text = statement_.substr(position_ + 1, close - position_ - 1);
  // A zero byte would end the storage's statement in the middle of the name.
  if (token_.text.empty() || token_.text.find('\0') != std::string::npos ||
      token_.text.find('[') != std::string::npos || !platform::IsUtf8(token_.text)) {
    Fail("Invalid bracketing of name");
  }
  position_ = close + 1;
}

std::size_t JetSqlLexer::SkipDigits() {
  const std::size_t begin = position_;
  while (position_ < statement_.size() && IsDigit(statement_[position_])) ++position_;
  return position_ - begin;
}

void JetSqlLexer::ScanNumber() {
  std::size_t digits = SkipDigits();
  if (position_ < statement_.size() && statement_[position_] == '.') {
    ++position_;
    digits += SkipDigits();
  }
  // "12ab" is no number followed by a name, and a hundred digits are no number at all.
  const bool runsOn = position_ < statement_.size() && IsNameByte(statement_[position_]);
  if (runsOn || digits > 30) Fail("Syntax error in number");
  token_.kind = TokenKind::kNumber;
  token_.text = statement_.substr(token_.offset, position_ - token_.offset);
}

void JetSqlLexer::ScanText(char quote) {
  token_.kind = TokenKind::kText;
  for (++position_;; ++position_) {
    const std::size_t close = statement_.find(quote, position_);
    if (close == std::string_view::npos) Fail("Syntax error in string");
    token_.text += statement_.substr(position_, close - position_);
    position_ = close + 1;
    if (position_ == statement_.size() || statement_[position_] != quote) return;
    token_.text += quote;
  }
}

void JetSqlLexer::ScanDate() {
  const std::size_t close = statement_.find('#', position_ + 1);
  if (close == std::string_view::npos) Fail("Syntax error in date");
  const auto date = ParseDateLiteral(statement_.substr(position_ + 1, close - position_ - 1));
  if (!date) Fail("Syntax error in date");
  token_.kind = TokenKind::kDate;
  token_.text = date->ToIso();
  position_ = close + 1;
}

void JetSqlLexer::ScanSymbol() {
  static constexpr std::array<std::string_view, 3> kPairs = {"<>", "<=", ">="};
  static constexpr std::string_view kSingles = "(),.;=<>+-*/&";
  std::size_t length = 1;
  const std::string_view rest = statement_.substr(position_);
  for (const std::string_view pair : kPairs) {
    if (rest.starts_with(pair)) length = 2;
  }
  if (kSingles.find(rest.front()) == std::string_view::npos) Fail("Syntax error (unknown character)");
  token_.kind = TokenKind::kSymbol;
  token_.text = rest.substr(0, length);
  position_ += length;
}

}  // namespace varnlog::dao
