#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DateTime.h"
#include "tools/exchange/ExchangeRecord.h"
#include "tools/exchange/PatientNames.h"

namespace varnlog::tools {

/// What a made-up practice reports. Percentages are of the records made.
struct GeneratorOptions {
  std::int64_t count = 60;  // records; spreads the exposures over the days from `start` on
  std::uint64_t seed = 1;
  std::string language = "D";
  platform::DateTime start = *platform::DateTime::FromCivil(2015, 1, 5);
  bool inTimeOrder = true;
  double informationPercent = 5;  // information on an exposure reported shortly before
  double repeatedPercent = 1;     // the same record once more
  double invalidPercent = 0.5;    // a birth date, date or time that is none
};

/// Makes the same records for the same options, on every system. About fifty exposures a patient. No two new
/// exposures have the same time, so that the log takes every one that is not a repetition.
class ExposureGenerator {
 public:
  explicit ExposureGenerator(GeneratorOptions options);

  /// The next record; good until the next call. Goes on for ever.
  [[nodiscard]] const Exposure& Next();

 private:
  struct Patient {
    std::string lastName;
    std::string firstName;
    std::string birthday;
    bool isMale = false;
  };

  [[nodiscard]] std::uint64_t Below(std::uint64_t limit);
  [[nodiscard]] bool Chance(double percent);
  template <typename List>
  [[nodiscard]] const auto& OneOf(const List& list) {
    return list[Below(list.size())];
  }

  void MakePatients();
  [[nodiscard]] platform::DateTime NextTime();
  void MakeNew();
  void SetPatient();
  void SetType();
  void SetValues();
  void Spoil();
  void MakeInformation(const Exposure& about);

  GeneratorOptions options_;
  NameLists names_;
  std::mt19937_64 random_;
  std::vector<Patient> patients_;
  std::int64_t slot_ = 0;  // exposures made so far
  Exposure current_;
  std::vector<Exposure> recent_;  // what information and repetitions refer to
};

}  // namespace varnlog::tools
