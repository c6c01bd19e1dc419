#pragma once

#include <array>
#include <optional>
#include <string>

#include "core/Selection.h"
#include "core/TextLookup.h"
#include "platform/Clock.h"
#include "platform/ShortDate.h"

namespace varnlog::dialogs {

/// What stands in the two date boxes: [0] from, [1] to.
using PeriodBoxes = std::array<std::string, 2>;

/// Why the period dialog stays open.
struct PeriodProblem {
  core::TextKey message;
  std::string dData;  // fills the message's placeholder of that name
  int focus = 0;      // the box that gets the focus
};

/// What the period dialog decides. The selection kind in `selection` says how a missing date is filled.
class Period {
 public:
  Period(core::Selection& selection, const platform::ShortDate& shortDate, const platform::Clock& clock,
         const core::TextLookup& texts)
      : selection_(selection), shortDate_(shortDate), clock_(clock), texts_(texts) {}

  /// 1 January of this year and today.
  [[nodiscard]] PeriodBoxes CurrentYear() const;

  /// The boxes of a usual period, which ends today unless it is past.
  enum class Usual { kToday, kThisWeek, kThisMonth, kThisQuarter, kThisYear, kLastYear };
  [[nodiscard]] PeriodBoxes Boxes(Usual usual) const;
  /// What stands in a box as a day, also in one of the short forms of DateEntry.h.
  [[nodiscard]] std::optional<platform::DateTime> Read(const std::string& text) const;
  /// A day as the boxes show it.
  [[nodiscard]] std::string Text(platform::DateTime day) const { return shortDate_.Format(day); }

  /// A date in the form that the boxes take; its day cannot be mistaken for a month.
  [[nodiscard]] std::string Example() const;

  /// The caption of the command that asks, which names the type of exposure.
  [[nodiscard]] core::TextKey Command() const;
  /// Whose period it is, "" for everybody's.
  [[nodiscard]] std::string Patient() const;

  /// Both are dates, and the period ends before it begins.
  [[nodiscard]] bool IsReversed(const PeriodBoxes& boxes) const;

  /// OK was pressed: fills a missing date into `boxes`, checks both, and on success stores dBegGl and dEndGl.
  /// A period that ends before it begins is taken as entered.
  [[nodiscard]] std::optional<PeriodProblem> Confirm(PeriodBoxes& boxes);

 private:
  [[nodiscard]] std::optional<PeriodProblem> Validate(const PeriodBoxes& boxes, int box) const;
  [[nodiscard]] std::optional<PeriodProblem> FillMissing(PeriodBoxes& boxes) const;

  core::Selection& selection_;
  const platform::ShortDate& shortDate_;
  const platform::Clock& clock_;
  const core::TextLookup& texts_;
};

}  // namespace varnlog::dialogs
