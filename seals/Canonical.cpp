#include "seals/Canonical.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace varnlog::seals {

namespace {

using dao::CellKind;
using dao::CellView;

constexpr std::size_t kMostDigits = 20;
constexpr std::size_t kMostAround = 2 * kMostDigits + 3;  // a text's length, or a number, and the signs

char* WriteNumber(char* out, std::int64_t number) {
  return std::to_chars(out, out + kMostDigits, number).ptr;
}

char* WriteText(char* out, std::string_view text) {
  constexpr std::size_t kTen = 10;
  if (text.size() < kTen) {
    *out++ = static_cast<char>('0' + text.size());
  } else {
    out = WriteNumber(out, static_cast<std::int64_t>(text.size()));
  }
  *out++ = ':';
  out = std::copy(text.begin(), text.end(), out);
  *out++ = ',';
  return out;
}

char* WriteDigits(char* out, std::int64_t number) {
  constexpr std::int64_t kTen = 10;
  if (number >= 0 && number < kTen) {
    // Most numbers are flags.
    *out++ = '1';
    *out++ = ':';
    *out++ = static_cast<char>('0' + number);
    *out++ = ',';
    return out;
  }
  std::array<char, kMostDigits> digits;
  const char* const end = WriteNumber(digits.data(), number);
  return WriteText(out, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

char* WriteValue(char* out, const CellView& value) {
  switch (value.kind) {
    case CellKind::kNull:
    case CellKind::kDeleted:
      *out++ = '-';
      *out++ = ',';
      return out;
    case CellKind::kInteger:
      return WriteDigits(out, value.integer);
    case CellKind::kBytes:
      // No text has this form.
      *out++ = 'x';
      break;
    case CellKind::kReal:
    case CellKind::kText:
      break;
  }
  return WriteText(out, value.text);
}

// Room once, then bytes: a million exposures have 25 values each.
template <typename Write>
void Append(std::string& out, std::size_t most, const Write& write) {
  const std::size_t before = out.size();
  out.resize(before + most);
  out.resize(static_cast<std::size_t>(write(out.data() + before) - out.data()));
}

}  // namespace

void AppendText(std::string& out, std::string_view text) {
  Append(out, text.size() + kMostAround, [&](char* at) { return WriteText(at, text); });
}

void AppendNumber(std::string& out, std::int64_t number) {
  Append(out, kMostAround, [&](char* at) { return WriteDigits(at, number); });
}

void AppendValue(std::string& out, const CellView& value) {
  Append(out, value.text.size() + kMostAround, [&](char* at) { return WriteValue(at, value); });
}

void DigestValue(std::string& waiting, platform::Sha256& digest, const CellView& value) {
  constexpr std::size_t kLong = 4096;
  if (value.kind != CellKind::kText || value.text.size() < kLong) return AppendValue(waiting, value);
  digest.Add(waiting.append(std::to_string(value.text.size())).append(":"));
  digest.Add(value.text);
  waiting.assign(1, ',');
}

void AppendLine(std::string& out, std::span<const CellView> values) {
  std::size_t most = 1;
  for (const CellView& value : values) most += value.text.size() + kMostAround;
  Append(out, most, [&](char* at) {
    for (const CellView& value : values) at = WriteValue(at, value);
    *at++ = '\n';
    return at;
  });
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
