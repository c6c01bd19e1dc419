#include "dialogs/Period.h"

namespace varnlog::dialogs {

using core::SelectionKind;
using core::literals::operator""_key;

PeriodBoxes Period::CurrentYear() const {
  const platform::DateTime today = clock_.Today();
  const platform::DateTime newYear = platform::DateTime::FromSerial(today.Year(), 1, 1);
  return {shortDate_.Format(newYear), shortDate_.Format(today)};
}

std::string Period::Example() const {
  return shortDate_.Format(platform::DateTime::FromSerial(clock_.Today().Year(), 12, 31));
}

core::TextKey Period::Command() const {
  switch (selection_.SortSelectionGl) {
    case SelectionKind::kPatientPeriod:
      return "MN_MNU_PATPERIOD"_key;
    case SelectionKind::kPeriodXI:
      return "MN_MNU_SELDATEALLXI"_key;
    case SelectionKind::kPeriodXP:
      return "MN_MNU_SELDATEALLXP"_key;
    case SelectionKind::kPeriodXC:
      return "MN_MNU_SELDATEALLXC"_key;
    case SelectionKind::kPeriodXS:
      return "MN_MNU_SELDATEALLXS"_key;
    case SelectionKind::kPeriodXV:
      return "MN_MNU_SELDATEALLXV"_key;
    default:
      return "MN_MNU_SELDATEALL"_key;
  }
}

std::string Period::Patient() const {
  if (selection_.SortSelectionGl != SelectionKind::kPatientPeriod) return {};
  return selection_.strPatNameGl + ", " + selection_.strPatFirstnameGl;
}

bool Period::IsReversed(const PeriodBoxes& boxes) const {
  const auto from = shortDate_.Parse(boxes[0]);
  const auto to = shortDate_.Parse(boxes[1]);
  return from && to && to->DatePart() < from->DatePart();
}

std::optional<PeriodProblem> Period::Validate(const PeriodBoxes& boxes, int box) const {
  const std::string& text = boxes.at(static_cast<std::size_t>(box));
  if (shortDate_.Parse(text)) return std::nullopt;
  return PeriodProblem{"BE_DATENOTVALID"_key, text, box};
}

std::optional<PeriodProblem> Period::FillMissing(PeriodBoxes& boxes) const {
  const SelectionKind kind = selection_.SortSelectionGl;
  if (kind == SelectionKind::kAll || kind == SelectionKind::kPatient) return std::nullopt;
  if (boxes[1].empty() && !boxes[0].empty()) {
    if (auto problem = Validate(boxes, 0)) return problem;
    boxes[1] = shortDate_.Format(clock_.Today());
  } else if (boxes[0].empty() && !boxes[1].empty()) {
    if (auto problem = Validate(boxes, 1)) return problem;
    boxes[0] = kind == SelectionKind::kPatientPeriod
                   ? shortDate_.Format(selection_.dPatBirthdayGl)
                   : shortDate_.FormatGeneral(platform::DateTime::FromSerial(1880, 1, 1));
  }
  return std::nullopt;
}

std::optional<PeriodProblem> Period::Confirm(PeriodBoxes& boxes) {
  if (boxes[0].empty() && boxes[1].empty()) return PeriodProblem{"BE_ATLEAST1DATE"_key, {}, 0};
  if (auto problem = FillMissing(boxes)) return problem;
  for (const int box : {0, 1}) {
    if (auto problem = Validate(boxes, box)) return problem;
  }
  selection_.dBegGl = shortDate_.Parse(boxes[0])->DatePart();
  selection_.dEndGl = shortDate_.Parse(boxes[1])->DatePart();
  return std::nullopt;
}

}  // namespace varnlog::dialogs
