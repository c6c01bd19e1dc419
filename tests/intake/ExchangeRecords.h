#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/TestFolder.h"

namespace varnlog::intake::test {

using varnlog::test::AppendFile;
using varnlog::test::ReadFile;
using varnlog::test::TestFolder;

/// A record as the imaging suite writes it.
inline std::string Record(char kind, const std::vector<std::string>& strings) {
  std::string body(1, kind);
  body.push_back('#');  // the byte that nobody reads
  for (const std::string& text : strings) body.append(text).push_back('\0');
  const auto length = static_cast<std::uint16_t>(body.size() + 2);
  std::string record;
  record.push_back(static_cast<char>(length & 0xFFU));
  record.push_back(static_cast<char>(length >> 8U));
  return record + body;
}

/// A bare length, for files that are wrong.
inline std::string Length(int length) {
  const auto bits = static_cast<std::uint16_t>(length);
  return {static_cast<char>(bits & 0xFFU), static_cast<char>(bits >> 8U)};
}

/// One exposure in the words of the practice; the texts are in the OEM code page.
struct Exposure {
  std::string lastName = "Muster";
  std::string firstName = "Max";
  std::string birthday = "01.02.1960";
  std::string sex = "M";
  std::string pregnancy = "";
  std::string type = "11XI";
  std::string takeDate = "03.04.2020";
  std::string takeTime = "10:11:12";
  std::string responsible = "Wagner";
  std::string duration = "120";
  std::string volt = "65";
  std::string current = "7";
  std::string dose = "3.5";

  /// The "T" record of a new exposure.
  [[nodiscard]] std::string New() const {
    return Record(
        'T', {"1",      lastName,    firstName, birthday, "5",      "6",  sex,     pregnancy, type, takeDate,
              takeTime, responsible, "14",      "15",     duration, volt, current, "19",      "20", dose});
  }
  /// The "I" record with information on one reported before.
  [[nodiscard]] std::string Information() const {
    return Record('I',
                  {lastName, firstName, birthday, "5", "6", type, takeDate, takeTime, responsible, "14"});
  }
};

/// A new file each time: emptying an old one makes some file systems wait for the disk.
inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::filesystem::remove(path);
  varnlog::test::WriteFile(path, bytes);
}

}  // namespace varnlog::intake::test
