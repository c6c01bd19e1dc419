#include "dialogs/Period.h"

#include "dialogs/DateEntry.h"

namespace varnlog::dialogs {

using core::SelectionKind;
using core::literals::operator""_key;

namespace {

int DaysSinceMonday(platform::DateTime day) {
  constexpr std::int64_t kSecondsPerDay = 86'400;
  constexpr std::int64_t kMonday = 2;  // the days are counted from a Saturday
  constexpr std::int64_t kDaysPerWeek = 7;
  const std::int64_t days = day.SecondsSinceEpoch() / kSecondsPerDay;
  return static_cast<int>(((days - kMonday) % kDaysPerWeek + kDaysPerWeek) % kDaysPerWeek);
}

}  // namespace

PeriodBoxes Period::CurrentYear() const {
  return Boxes(Usual::kThisYear);
}

std::string Period::Example() const {
  return shortDate_.Format(platform::DateTime::FromSerial(clock_.Today().Year(), 12, 31));
}

PeriodBoxes Period::Boxes(Usual usual) const {
  using platform::DateTime;
  const DateTime today = clock_.Today();
  const auto boxes = [this](DateTime from, DateTime to) { return PeriodBoxes{Text(from), Text(to)}; };
  const auto since = [&](int month, int day) {
    return boxes(DateTime::FromSerial(today.Year(), month, day), today);
  };
  switch (usual) {
    case Usual::kToday:
      return boxes(today, today);
    case Usual::kThisWeek:
      return since(today.Month(), today.Day() - DaysSinceMonday(today));
    case Usual::kThisMonth:
      return since(today.Month(), 1);
    case Usual::kThisQuarter:
      return since((today.Month() - 1) / 3 * 3 + 1, 1);
    case Usual::kThisYear:
      return since(1, 1);
    case Usual::kLastYear:
      return boxes(DateTime::FromSerial(today.Year() - 1, 1, 1),
                   DateTime::FromSerial(today.Year() - 1, 12, 31));
  }
  return {};
}

std::optional<platform::DateTime> Period::Read(const std::string& text) const {
  return ReadDateEntry(text, shortDate_, clock_.Today(), texts_);
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
  const auto from = Read(boxes[0]);
  const auto to = Read(boxes[1]);
  return from && to && to->DatePart() < from->DatePart();
}

std::optional<PeriodProblem> Period::Validate(const PeriodBoxes& boxes, int box) const {
  const std::string& text = boxes.at(static_cast<std::size_t>(box));
  if (Read(text)) return std::nullopt;
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
  selection_.dBegGl = Read(boxes[0])->DatePart();
  selection_.dEndGl = Read(boxes[1])->DatePart();
  return std::nullopt;
}

}  // namespace varnlog::dialogs
