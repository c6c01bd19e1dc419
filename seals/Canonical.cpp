#include "seals/Canonical.h"

#include <array>
#include <charconv>

namespace varnlog::seals {

namespace {

using dao::CellKind;
using dao::CellView;

constexpr std::size_t kMostDigits = 20;

std::string_view Digits(std::int64_t number, std::array<char, kMostDigits>& digits) {
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), static_cast<std::size_t>(end - digits.data())};
}

}  // namespace

void AppendText(std::string& out, std::string_view text) {
  constexpr std::size_t kTen = 10;
  if (text.size() < kTen) {
    out += static_cast<char>('0' + text.size());
  } else {
    std::array<char, kMostDigits> digits;
    out += Digits(static_cast<std::int64_t>(text.size()), digits);
  }
  out += ':';
  out += text;
  out += ',';
}

void AppendNumber(std::string& out, std::int64_t number) {
  std::array<char, kMostDigits> digits;
  AppendText(out, Digits(number, digits));
}

void AppendValue(std::string& out, const CellView& value) {
  switch (value.kind) {
    case CellKind::kNull:
    case CellKind::kDeleted:
      out += "-,";
      return;
    case CellKind::kInteger:
      AppendNumber(out, value.integer);
      return;
    case CellKind::kBytes:
      // No text has this form.
      out += 'x';
      [[fallthrough]];
    case CellKind::kReal:
    case CellKind::kText:
      AppendText(out, value.text);
  }
}

bool SameValue(const CellView& a, const CellView& b) {
  std::string first;
  std::string second;
  AppendValue(first, a);
  AppendValue(second, b);
  return first == second;
}

std::string TextOf(const CellView& value) {
  if (value.kind == CellKind::kInteger) return std::to_string(value.integer);
  return std::string(value.text);
}

std::int64_t NumberOf(const CellView& value) {
  return value.kind == CellKind::kInteger ? value.integer : 0;
}

}  // namespace varnlog::seals
