#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "logview/Tally.h"
#include "statistics/Retention.h"
#include "statistics/Statistics.h"

namespace varnlog::statistics {

/// Reads the statistics of some exposures in one pass over the columns that they need.
class StatisticsReader {
 public:
  /// Refers to `log`.
  StatisticsReader(dao::Database& log, std::span<const std::int64_t> exposures, platform::DateTime today);

  /// Reads about as many further rows of the log; true when none are left. Throws dao::EngineError.
  bool Read(std::int64_t rows);
  /// Of what was read. To be called once.
  [[nodiscard]] Statistics Take();

 private:
  /// What is needed of a time stamp; found out once for exposures of the same day.
  struct Day {
    std::string date;
    Part* month = nullptr;
    std::size_t weekday = 0;
  };
  void AddRow(const logview::ExposureScan::Row& row);
  Part* AddTime(std::string_view taken);
  void AddDose(std::string_view type, std::string_view taken, std::string_view dose);

  logview::ExposureScan scan_;
  Retention retention_;
  Statistics read_;
  Day day_;
  /// Of each type the newest doses, more of them than are wanted in the end.
  std::map<std::string, std::vector<std::pair<std::string, double>>, std::less<>> latest_;
};

/// The whole of it at once.
[[nodiscard]] Statistics ReadStatistics(dao::Database& log, std::span<const std::int64_t> exposures,
                                        platform::DateTime today);

}  // namespace varnlog::statistics
