#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace varnlog::platform {

/// Converts between one legacy code page and UTF-8, the program's own text form.
class CodePage {
 public:
  /// `number` is the Windows number: 437, 850, 866, 1250, 1251, 1252, ... Throws std::invalid_argument for a
  /// page the system does not know.
  explicit CodePage(int number);
  ~CodePage();
  CodePage(CodePage&&) noexcept;
  CodePage& operator=(CodePage&&) noexcept;

  /// The OEM page of the exchange file: the system's on Windows, elsewhere 866 for language "CYR", else 850.
  [[nodiscard]] static CodePage Oem(std::string_view language);
  /// The page of ANSI text files: 1251 for language "CYR", else 1252.
  [[nodiscard]] static CodePage Ansi(std::string_view language);

  [[nodiscard]] int number() const { return number_; }

  /// Every byte has a character: bytes the page leaves undefined become U+FFFD, or U+0080 to U+009F in the
  /// Windows pages.
  [[nodiscard]] std::string ToUtf8(std::string_view bytes) const;
  /// The same, appended to `out`, whose capacity is reused: the form for long files.
  void AppendUtf8(std::string_view bytes, std::string& out) const;
  /// Characters the page does not have become '?'.
  [[nodiscard]] std::string FromUtf8(std::string_view text) const;

 private:
  struct Tables;
  int number_;
  std::unique_ptr<const Tables> tables_;
};

/// True when `bytes` is well-formed UTF-8 (no overlong forms, no surrogates).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// The number of characters (code points) of a UTF-8 text; a malformed byte counts as one.
[[nodiscard]] std::size_t CharacterCount(std::string_view text);

/// The longest start of `text` that has at most `characters` characters, never cutting one in two.
[[nodiscard]] std::string_view FirstCharacters(std::string_view text, std::size_t characters);

/// A text file written by another program: taken as UTF-8 when it is well-formed, else as `fallback`. A byte
/// order mark is dropped.
[[nodiscard]] std::string DecodeTextFile(std::string_view bytes, const CodePage& fallback);

}  // namespace varnlog::platform
