#include "tools/exchange/ExchangeRecord.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace varnlog::tools {

namespace {

/// Region and type share one string: two characters each.
std::string TypeString(const Exposure& exposure) {
  std::string text = exposure.typeExtra;
  if (text.size() < 2) text.insert(0, 2 - text.size(), ' ');
  return exposure.typeCode.empty() ? std::string() : text + exposure.typeCode;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::vector<std::string> StringsOf(const Exposure& e) {
  if (e.kind == Exposure::Kind::kInformation) {
    return {e.lastName,    e.firstName, e.birthday, e.field5,      e.field6,
            TypeString(e), e.takeDate,  e.takeTime, e.responsible, e.field14};
  }
  return {e.field1,   e.lastName,    e.firstName, e.birthday, e.field5,      e.field6,  e.sex,
          e.pregCode, TypeString(e), e.takeDate,  e.takeTime, e.responsible, e.field14, e.field15,
          e.radDur,   e.volt,        e.cur,       e.field19,  e.field20,     e.dose};
}

}  // namespace

void AppendRecord(const Exposure& exposure, const platform::CodePage& oem, std::string& out) {
  std::vector<std::string> strings = StringsOf(exposure);
  std::vector<std::string_view> views;
  views.reserve(strings.size());
  for (std::string& text : strings) {
    if (!IsAscii(text)) text = oem.FromUtf8(text);
    views.emplace_back(text);
  }
  AppendRawRecord(static_cast<char>(exposure.kind), views, out);
}

void AppendRawRecord(char kind, std::span<const std::string_view> strings, std::string& out) {
  std::size_t length = 4;
  for (const std::string_view text : strings) length += text.size() + 1;
  if (length > 0x7FFF) throw std::length_error("an exchange record has at most 32767 bytes");
  out += static_cast<char>(length & 0xFFU);
  out += static_cast<char>(length >> 8U);
  out += kind;
  out += ' ';
  for (const std::string_view text : strings) out.append(text).push_back('\0');
}

}  // namespace varnlog::tools
