#include "tools/exchange/ExposureGenerator.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <utility>

namespace varnlog::tools {

namespace {

using platform::DateTime;

constexpr std::size_t kRemembered = 32;
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kOpeningSecond = 8 * 3'600;
constexpr std::int64_t kWorkingSeconds = 10 * 3'600;
constexpr std::int64_t kDaysToFill = 3'600;  // about ten years

std::string Dotted(DateTime date) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%02d.%02d.%04d", date.Day(), date.Month(), date.Year());
  return text.data();
}

std::string Colons(DateTime time) {
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", time.Hour(), time.Minute(), time.Second());
  return text.data();
}

struct ExposureType {
  std::string_view code;
  int share;  // of a hundred exposures
  std::array<std::string_view, 3> radDur;
  std::string_view volt;
  std::string_view cur;
};

constexpr auto kTypes = std::to_array<ExposureType>({
    {"XI", 60, {"80", "120", "160"}, "60", "7"},
    {"XP", 22, {"14100", "16000", "9000"}, "68", "8"},
    {"XC", 8, {"9400", "500", "700"}, "73", "15"},
    {"XS", 5, {"4500", "6000", "3200"}, "64", "6"},
    {"XV", 5, {"14200", "9600", "4400"}, "85", "10"},
});

constexpr auto kDoses = std::to_array<std::string_view>({"1.2", "3.4", "12.7", "58.0", "0.9", "104.5"});

std::string Tooth(std::uint64_t quadrant, std::uint64_t position) {
  return {static_cast<char>('1' + quadrant), static_cast<char>('1' + position)};
}

}  // namespace

ExposureGenerator::ExposureGenerator(GeneratorOptions options)
    : options_(std::move(options)), names_(NamesFor(options_.language)), random_(options_.seed) {
  options_.count = std::max<std::int64_t>(options_.count, 1);
  MakePatients();
}

// The distributions of the standard library differ from system to system; the engine does not.
std::uint64_t ExposureGenerator::Below(std::uint64_t limit) {
  return random_() % limit;
}

bool ExposureGenerator::Chance(double percent) {
  return static_cast<double>(Below(1'000'000)) < percent * 10'000;
}

void ExposureGenerator::MakePatients() {
  patients_.resize(static_cast<std::size_t>(std::max<std::int64_t>(options_.count / 50, 12)));
  const DateTime oldest = *DateTime::FromCivil(1931, 3, 1);
  for (Patient& patient : patients_) {
    patient.lastName = OneOf(names_.surnames);
    patient.isMale = Chance(48);
    patient.firstName = patient.isMale ? OneOf(names_.men) : OneOf(names_.women);
    const auto days = static_cast<std::int64_t>(Below(80 * 365));
    patient.birthday = Dotted(DateTime::FromSeconds(oldest.SecondsSinceEpoch() + days * kSecondsPerDay));
  }
}

DateTime ExposureGenerator::NextTime() {
  const std::int64_t aDay = std::max<std::int64_t>(12, options_.count / kDaysToFill + 1);
  const std::int64_t spacing = std::max<std::int64_t>(1, kWorkingSeconds / aDay);
  std::int64_t slot = slot_++;
  if (!options_.inTimeOrder && slot < options_.count) {
    // A step that has no divisor in common with the count visits every slot once.
    std::int64_t step = options_.count * 5 / 8 | 1;
    while (std::gcd(step, options_.count) != 1) step += 2;
    slot = slot * step % options_.count;
  }
  const std::int64_t day = slot / aDay;
  const auto jitter = static_cast<std::int64_t>(Below(static_cast<std::uint64_t>(spacing)));
  const std::int64_t second = kOpeningSecond + slot % aDay * spacing + jitter;
  return DateTime::FromSeconds(options_.start.DatePart().SecondsSinceEpoch() + day * kSecondsPerDay + second);
}

const Exposure& ExposureGenerator::Next() {
  if (!recent_.empty() && Chance(options_.repeatedPercent)) {
    current_ = OneOf(recent_);
  } else if (!recent_.empty() && Chance(options_.informationPercent)) {
    MakeInformation(OneOf(recent_));
  } else {
    MakeNew();
  }
  return current_;
}

void ExposureGenerator::MakeNew() {
  const DateTime taken = NextTime();
  current_ = {};
  current_.takeDate = Dotted(taken);
  current_.takeTime = Colons(taken);
  SetPatient();
  SetType();
  SetValues();
  if (Chance(options_.invalidPercent)) Spoil();
  if (recent_.size() < kRemembered) {
    recent_.push_back(current_);
  } else {
    recent_[static_cast<std::size_t>(slot_) % kRemembered] = current_;
  }
}

void ExposureGenerator::SetPatient() {
  const Patient& patient = OneOf(patients_);
  current_.lastName = patient.lastName;
  current_.firstName = patient.firstName;
  current_.birthday = patient.birthday;
  current_.sex = Chance(1) ? "" : patient.isMale ? "M" : "F";
  if (!patient.isMale) current_.pregCode = Chance(2) ? "P" : Chance(70) ? "N" : "";
  if (Chance(70)) {
    current_.responsible = OneOf(names_.staff);
  } else if (Chance(50)) {
    current_.responsible = "-";
  }
}

void ExposureGenerator::SetType() {
  auto drawn = static_cast<int>(Below(100));
  const ExposureType* type = kTypes.data();
  while (drawn >= type->share) drawn -= (type++)->share;
  current_.typeCode = type->code;
  current_.radDur = Chance(10) ? std::string() : std::string(OneOf(type->radDur));
  current_.volt = type->volt;
  current_.cur = type->cur;
  if (type->code == "XI" || type->code == "XS") {
    const bool isMilkTooth = Chance(6);
    current_.typeExtra = isMilkTooth ? Tooth(4 + Below(4), Below(5)) : Tooth(Below(4), Below(8));
  } else if (type->code == "XP") {
    current_.typeExtra = Chance(60) ? "P" + std::to_string(1 + Below(9)) : "";
  }
  if (Chance(3)) current_.typeExtra = "~~";
}

void ExposureGenerator::SetValues() {
  // Intraoral generators without a data line leave their values to the suite's settings.
  if (current_.typeCode == "XI" && Chance(30)) {
    current_.volt.clear();
    current_.cur.clear();
  }
  if (Chance(60)) current_.dose = OneOf(kDoses);
}

void ExposureGenerator::Spoil() {
  switch (Below(3)) {
    case 0:
      current_.birthday = Chance(50) ? "" : "31.13.1999";
      break;
    case 1:
      current_.takeDate = "99.99.9999";
      break;
    default:
      current_.takeTime = "25:61:00";
      break;
  }
}

void ExposureGenerator::MakeInformation(const Exposure& about) {
  Exposure information;
  information.kind = Exposure::Kind::kInformation;
  information.lastName = about.lastName;
  information.firstName = about.firstName;
  information.birthday = about.birthday;
  information.typeCode = about.typeCode;
  information.typeExtra = Chance(40) ? "~~" : about.typeExtra;
  information.takeDate = about.takeDate;
  information.takeTime = about.takeTime;
  information.responsible = OneOf(names_.staff);
  current_ = std::move(information);
}

}  // namespace varnlog::tools
