#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace varnlog::platform {

/// Converts between one legacy code page of single bytes and UTF-8, the program's own text form. Copies share
/// their tables, and a page's tables are built once for the process.
class CodePage {
 public:
  /// `number` is the Windows number: 437, 850, 866, 1250, 1251, 1252, ... Throws std::invalid_argument for a
  /// page the system does not know and for one whose characters take several bytes.
  explicit CodePage(int number);

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
  [[nodiscard]] static std::shared_ptr<const Tables> TablesOf(int number);
  int number_;
  std::shared_ptr<const Tables> tables_;
};

/// The three bytes that some programs put at the start of a UTF-8 file.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// True when `bytes` is well-formed UTF-8 (no overlong forms, no surrogates).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

/// How many bytes at the start of `bytes` are below 0x80.
[[nodiscard]] std::size_t AsciiPrefix(std::string_view bytes);

/// Takes one character off the start of a UTF-8 text that is not empty; nothing for a malformed byte, which
/// is taken off alone.
[[nodiscard]] std::optional<char32_t> NextCharacter(std::string_view& text);

/// Appends a character; what is no Unicode scalar value becomes U+FFFD.
void AppendCharacter(char32_t character, std::string& out);

/// Every letter that has a single upper-case counterpart replaced by it (so ß stays).
[[nodiscard]] std::string UpperCase(std::string_view text);

/// The number of characters (code points) of a UTF-8 text; a malformed byte counts as one.
[[nodiscard]] std::size_t CharacterCount(std::string_view text);

/// The longest start of `text` that has at most `characters` characters, never cutting one in two.
[[nodiscard]] std::string_view FirstCharacters(std::string_view text, std::size_t characters);

/// A text file written by another program: taken as UTF-8 when it is well-formed, else as `fallback`. A byte
/// order mark is dropped.
[[nodiscard]] std::string DecodeTextFile(std::string_view bytes, const CodePage& fallback);

}  // namespace varnlog::platform
