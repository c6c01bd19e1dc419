#include "tools/screenshots/DemoPractice.h"

#include <fstream>
#include <system_error>

#include "platform/CodePage.h"
#include "tools/exchange/ExposureGenerator.h"

namespace varnlog::tools {

namespace fs = std::filesystem;

namespace {

// Enough that the update's window can be seen at work.
constexpr std::int64_t kExposures = 20'000;

/// What texts need room for: the longest names that the log takes, and a birth date and a time that are none.
std::vector<Exposure> Extremes(const std::string& language) {
  Exposure longNames;
  const bool cyrillic = language == "CYR";
  longNames.lastName = cyrillic ? "Заболоцкая-Константинопольская" : "zu Löwenstein-Wertheim-Rosenberg";
  longNames.firstName = cyrillic ? "Александра Владиславовна" : "Wilhelmine Friederike Auguste";
  longNames.birthday = "17.08.1948";
  longNames.sex = "F";
  longNames.pregCode = "N";
  longNames.typeCode = "XP";
  longNames.typeExtra = "P1";
  longNames.takeDate = "20.11.2026";
  longNames.takeTime = "18:05:00";
  longNames.radDur = "16000";
  longNames.volt = "68";
  longNames.cur = "8";
  longNames.dose = "104.5";
  Exposure noBirthday = longNames;
  noBirthday.lastName = cyrillic ? "Шевченко" : "Müller";
  noBirthday.firstName = cyrillic ? "Тарас" : "Jörg";
  noBirthday.birthday = "31.13.1999";
  noBirthday.sex = "M";
  noBirthday.pregCode.clear();
  noBirthday.takeDate = "02.05.2022";
  noBirthday.takeTime = "18:20:00";
  Exposure noTime = longNames;
  noTime.takeDate = "03.05.2022";
  noTime.takeTime = "?";
  return {longNames, noBirthday, noTime};
}

void Write(const fs::path& file, const std::string& content) {
  std::ofstream stream(file, std::ios::binary);
  stream << content;
  if (!stream.flush()) {
    throw fs::filesystem_error("cannot write", file, std::make_error_code(std::errc::io_error));
  }
}

}  // namespace

DemoPractice::DemoPractice(fs::path folder, const Parts& parts, const std::string& language)
    : folder_(std::move(folder)) {
  if (fs::exists(folder_)) {
    throw fs::filesystem_error("exists already", folder_, std::make_error_code(std::errc::file_exists));
  }
  fs::create_directories(data());
  fs::create_directories(program());
  for (const char* file : {"verbalo.mdb", "varnlog.md0", "system.mdw"}) {
    fs::copy_file(parts.programFolder / file, program() / file);
  }
  fs::copy(parts.programFolder / "help", program() / "help");
  fs::copy_file(parts.oldLog, oldLog());
  fs::copy_file(parts.suite / "KVFILEDB.DLL", folder_ / "KVFILEDB.DLL");
  Write(folder_ / "kalvero.ini", "[INSTALL]\r\nSite=Zahnarztpraxis Dr. Weiß\r\n[Config]\r\nSchemeUS=0\r\n");
  Write(folder_ / "fotavex.ini", "[XRaysIO]\r\nkV=60\r\nmA=7\r\n");
  Write(program() / "varnlog.ini",
        "[App]\r\nLanguage=" + language +
            "\r\n[User]\r\nOptBigIcons=1\r\nOptTbrVisible=1\r\nOptSbrVisible=1\r\n");
  Report(language);
}

DemoPractice::~DemoPractice() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void DemoPractice::Report(const std::string& language) const {
  ExposureGenerator generator({.count = kExposures,
                               .language = language,
                               .start = *platform::DateTime::FromCivil(2022, 4, 30),
                               .invalidPercent = 0});
  const auto oem = platform::CodePage::Oem(language);
  std::string records;
  for (std::int64_t i = 0; i < kExposures; ++i) AppendRecord(generator.Next(), oem, records);
  for (const Exposure& exposure : Extremes(language)) AppendRecord(exposure, oem, records);
  Write(data() / "varnlog.sdx", records);
}

}  // namespace varnlog::tools
