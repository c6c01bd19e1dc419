#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/IdSet.h"
#include "db/dao/TableScan.h"

namespace varnlog::logview {

/// Exposures, and how many of them say that they are a repeat or of no diagnostic use.
struct Retakes {
  std::int64_t exposures = 0;
  std::int64_t repeats = 0;
  std::int64_t notDiagnostic = 0;

  /// `retake` is the stored code.
  void Add(std::string_view retake);
  friend bool operator==(const Retakes&, const Retakes&) = default;
};

struct Quartiles {
  double lower = 0;
  double median = 0;
  double upper = 0;
};

/// The doses of exposures. A text that is no number is counted and never guessed at; see ReadMeasured().
class Doses {
 public:
  /// The number that was added; nothing when there is none.
  std::optional<double> Add(std::string_view stored);

  [[nodiscard]] std::int64_t Values() const { return values_; }
  [[nodiscard]] std::int64_t Unread() const { return unread_; }
  [[nodiscard]] std::int64_t Empty() const { return empty_; }
  [[nodiscard]] double Sum() const { return sum_; }
  /// Between two values the point that divides them is taken; nothing without a value.
  [[nodiscard]] std::optional<Quartiles> Spread() const;
  /// Digits behind the separator of the most exact value.
  [[nodiscard]] int Decimals() const { return decimals_; }

 private:
  struct Known {
    std::optional<double> value;
    std::int64_t count = 0;
  };
  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  std::unordered_map<std::string, Known, Hash, std::equal_to<>> known_;  // each text is read once
  std::int64_t values_ = 0;
  std::int64_t unread_ = 0;
  std::int64_t empty_ = 0;
  double sum_ = 0;
  int decimals_ = 0;
};

/// Reads some exposures of a log once, in slices between which the file is free.
class ExposureScan {
 public:
  /// `fields` as Database::Scan takes them. Refers to `log`.
  ExposureScan(dao::Database& log, std::vector<std::string> fields, std::span<const std::int64_t> exposures);

  using Row = std::vector<dao::CellView>;
  /// Hands about as many further rows of the log, as far as they are among the exposures, to `take`; true
  /// when none are left. Throws dao::EngineError.
  bool Read(std::int64_t rows, const std::function<void(const Row&)>& take);

 private:
  dao::Database& log_;
  std::vector<std::string> fields_;
  dao::IdSet wanted_;
  std::optional<std::int64_t> next_;  // nothing when none are left
};

/// What a line below the list says of some exposures.
class Tally {
 public:
  /// Refers to `log`.
  Tally(dao::Database& log, std::span<const std::int64_t> exposures);

  /// As ExposureScan's.
  bool Read(std::int64_t rows);
  [[nodiscard]] const Retakes& Counted() const { return retakes_; }
  [[nodiscard]] const Doses& OfDose() const { return doses_; }

 private:
  ExposureScan scan_;
  Retakes retakes_;
  Doses doses_;
};

}  // namespace varnlog::logview
