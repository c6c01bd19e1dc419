#pragma once

#include <cstdint>
#include <string>

#include "platform/DateTime.h"

namespace varnlog::core {

/// The nine selections of the log view; the numbers are stored in the program's INI file.
enum class SelectionKind : std::int16_t {
  kAll = 0,
  kPeriod = 1,
  kPatient = 2,
  kPatientPeriod = 3,
  kPeriodXI = 4,
  kPeriodXP = 5,
  kPeriodXC = 6,
  kPeriodXS = 7,
  kPeriodXV = 8,
};

[[nodiscard]] constexpr bool AsksPatient(SelectionKind kind) {
  return kind == SelectionKind::kPatient || kind == SelectionKind::kPatientPeriod;
}
[[nodiscard]] constexpr bool AsksPeriod(SelectionKind kind) {
  return kind != SelectionKind::kAll && kind != SelectionKind::kPatient;
}

/// Which exposures the log view shows: one value, so that it is kept, compared and put back as a whole. What
/// the kind does not ask for keeps the values of the last selection that did.
struct Selection {
  SelectionKind SortSelectionGl = SelectionKind::kAll;
  platform::DateTime dBegGl;  // first and last day of the period
  platform::DateTime dEndGl;
  std::string strPatNameGl;
  std::string strPatFirstnameGl;
  platform::DateTime dPatBirthdayGl;

  /// Whether everything that the kind asks for is there.
  [[nodiscard]] bool IsComplete() const;

  friend bool operator==(const Selection&, const Selection&) = default;
};

}  // namespace varnlog::core
