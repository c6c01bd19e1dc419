#pragma once

#include <algorithm>
#include <string>

namespace varnlog::report {

/// Pages of a report, counted from 1; a last page of 0 stands for the end of the report.
struct PageRange {
  int first = 1;
  int last = 0;
};

/// What the user last chose in the printer dialog; kept as long as the program runs.
struct PrintChoices {
  std::string printer;  // "" for the system's default
  int copies = 1;
  bool collate = true;
  bool allPages = true;
  int from = 1;
  int to = 1;
  bool withEntries = false;
};

/// The pages that are chosen.
[[nodiscard]] inline PageRange ChosenRange(const PrintChoices& choices) {
  return choices.allPages ? PageRange{} : PageRange{choices.from, choices.to};
}

/// Whether a range holds a page of a report of `pages` pages. It may reach beyond the last one.
[[nodiscard]] inline bool HasPages(PageRange range, int pages) {
  return range.first >= 1 && range.first <= pages && (range.last == 0 || range.last >= range.first);
}

}  // namespace varnlog::report
