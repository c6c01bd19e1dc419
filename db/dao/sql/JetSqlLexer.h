#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace varnlog::dao {

enum class TokenKind { kName, kBracketedName, kNumber, kText, kDate, kSymbol, kEnd };

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::size_t offset = 0;  // of its first byte in the statement
  std::string text;  // a text without its quotes, a name without its brackets, a date in the stored form
};

/// Takes a statement apart one token at a time, so that of two faults the first one is reported. Cheap to
/// copy: a copy is a place to come back to. The statement must outlive it.
class JetSqlLexer {
 public:
  explicit JetSqlLexer(std::string_view statement);

  /// The token at hand; kEnd after the last one.
  [[nodiscard]] const Token& Peek() const { return token_; }
  Token Take();

  /// Whether the token at hand is this word (letter case ignored, upper case given) or this symbol.
  [[nodiscard]] bool IsWord(std::string_view word) const;
  [[nodiscard]] bool IsSymbol(std::string_view symbol) const;
  /// Takes the token when it is that one.
  bool TakeWord(std::string_view word);
  bool TakeSymbol(std::string_view symbol);
  void ExpectWord(std::string_view word);
  void ExpectSymbol(std::string_view symbol);

  /// A name: in brackets, or bare and no word of the language.
  [[nodiscard]] bool IsName() const;

  /// kSyntaxError naming the token at hand.
  [[noreturn]] void Fail(std::string_view what = "Syntax error (missing operator)") const;
  /// kSyntaxError naming a place.
  [[noreturn]] void FailAt(std::size_t offset, std::string_view what) const;

 private:
  void Advance();
  void ScanWord();
  void ScanBracketed();
  void ScanNumber();
  void ScanText(char quote);
  void ScanDate();
  void ScanSymbol();
  std::size_t SkipDigits();

  std::string_view statement_;
  std::size_t position_ = 0;
  Token token_;
};

}  // namespace varnlog::dao
