#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/CodePage.h"

namespace varnlog::tools {

/// What the imaging suite reports about one exposure, in UTF-8. Fields without a name here are unknown to the
/// log and stay empty.
struct Exposure {
  enum class Kind : char { kNew = 'T', kInformation = 'I' };

  Kind kind = Kind::kNew;
  std::string field1;
  std::string lastName;
  std::string firstName;
  std::string birthday;  // dd.mm.yyyy
  std::string field5;
  std::string field6;
  std::string sex;        // "M", "F"
  std::string pregCode;   // "P", "N"
  std::string typeExtra;  // tooth or region, at most two characters; "~~": not diagnosable
  std::string typeCode;   // "XI", "XP", ...
  std::string takeDate;   // dd.mm.yyyy
  std::string takeTime;   // hh:mm:ss
  std::string responsible;
  std::string field14;
  std::string field15;
  std::string radDur;
  std::string volt;
  std::string cur;
  std::string field19;
  std::string field20;
  std::string dose;
};

/// Appends one record to `out`: the length (two bytes, little-endian, itself included), the kind, a byte that
/// readers skip, then every string with its terminating zero, in the OEM code page.
void AppendRecord(const Exposure& exposure, const platform::CodePage& oem, std::string& out);

/// The same for strings given one by one, so that a test can leave some out. Strings are bytes already.
void AppendRawRecord(char kind, std::span<const std::string_view> strings, std::string& out);

}  // namespace varnlog::tools
