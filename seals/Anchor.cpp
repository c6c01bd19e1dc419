#include "seals/Anchor.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace varnlog::seals {

namespace {

// Without I, L, O and U, which are taken for other signs.
constexpr std::string_view kLetters = "0123456789ABCDEFGHJKMNPQRSTVWXYZ";
constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kAlphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::size_t kWholeDigest = 64;
constexpr std::size_t kPrintedHex = 25;      // 100 bits
constexpr std::size_t kPrintedLetters = 20;  // five bits each
constexpr std::size_t kGroup = 5;

// ISO 7064, MOD 37,36: finds every wrong sign and every two that changed places.
char CheckDigit(std::string_view text) {
  constexpr std::size_t kModulus = 36;
  std::size_t check = kModulus;
  for (const char c : text) {
    check = (check + kAlphabet.find(c)) % kModulus;
    if (check == 0) check = kModulus;
    check = check * 2 % (kModulus + 1);
  }
  return kAlphabet[(kModulus + 1 - check) % kModulus];
}

std::string ToLetters(std::string_view hex) {
  std::string letters;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char digit : hex) {
    bits = (bits << 4U) | static_cast<unsigned>(kHexDigits.find(digit));
    count += 4;
    if (count < 5) continue;
    count -= 5;
    letters += kLetters[(bits >> count) & 31U];
  }
  return letters;
}

std::string ToHex(std::string_view letters) {
  std::string hex;
  unsigned bits = 0;
  unsigned count = 0;
  for (const char letter : letters) {
    bits = (bits << 5U) | static_cast<unsigned>(kLetters.find(letter));
    for (count += 5; count >= 4; count -= 4) hex += kHexDigits[(bits >> (count - 4)) & 15U];
  }
  return hex;
}

std::optional<std::int64_t> ReadNumber(std::string_view digits) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size() || number < 1) return std::nullopt;
  return number;
}

std::optional<Anchor> ReadWhole(std::string_view text) {
  const std::size_t hyphen = text.find('-');
  if (hyphen == std::string_view::npos) return std::nullopt;
  std::string digest(text.substr(hyphen + 1));
  std::transform(digest.begin(), digest.end(), digest.begin(),
                 [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
  const auto number = ReadNumber(text.substr(0, hyphen));
  const bool isDigest =
      digest.size() == kWholeDigest && digest.find_first_not_of(kHexDigits) == std::string::npos;
  if (!number || !isDigest) return std::nullopt;
  return Anchor{*number, digest};
}

// What people read for another sign.
char Meant(char c) {
  if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  if (c == 'O') return '0';
  return c == 'I' || c == 'L' ? '1' : c;
}

std::optional<Anchor> ReadPrinted(std::string_view text) {
  std::string signs;
  for (const char c : text)
    if (c != '-' && c != ' ' && c != '\t') signs += c;
  if (signs.size() < kPrintedLetters + 2) return std::nullopt;
  const auto check = std::exchange(signs.back(), '\0');
  signs.pop_back();
  std::transform(signs.begin(), signs.end(), signs.begin(), Meant);
  const std::string letters = signs.substr(signs.size() - kPrintedLetters);
  const auto number = ReadNumber(std::string_view(signs).substr(0, signs.size() - kPrintedLetters));
  if (!number || letters.find_first_not_of(kLetters) != std::string::npos) return std::nullopt;
  // The check digit itself can be any letter.
  const char expected = CheckDigit(signs);
  if (Meant(check) != Meant(expected)) return std::nullopt;
  return Anchor{*number, ToHex(letters)};
}

}  // namespace

std::optional<Anchor> ReadAnchor(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.remove_suffix(1);
  if (auto whole = ReadWhole(text)) return whole;
  return ReadPrinted(text);
}

std::string PrintedAnchor(const Head& head) {
  const std::string number = std::to_string(head.number);
  const std::string letters = ToLetters(std::string_view(head.digest).substr(0, kPrintedHex));
  std::string printed = number;
  for (std::size_t at = 0; at < letters.size(); at += kGroup) printed += "-" + letters.substr(at, kGroup);
  return printed + "-" + CheckDigit(number + letters);
}

}  // namespace varnlog::seals
