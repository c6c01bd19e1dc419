#include "logview/LaterEntries.h"

#include <algorithm>

namespace varnlog::logview {

LaterEntries::LaterEntries(dao::Database& log, const core::TextLookup& texts,
                           const intake::ToothScheme& scheme, const platform::ShortDate& shortDate)
    : log_(&log),
      text_(texts, scheme, shortDate),
      lastEntry_(seals::LastEntry(log)),
      changed_(seals::ReadChangedExposures(log)) {}

std::vector<std::string> LaterEntries::Of(std::int64_t exposure, std::string_view type) const {
  std::vector<std::string> lines;
  if (!std::binary_search(changed_.begin(), changed_.end(), exposure)) return lines;
  for (const seals::HistoryEntry& entry : seals::ReadHistory(*log_, exposure))
    if (seals::IsOfValue(entry.field) && entry.number <= lastEntry_)
      lines.push_back(text_.NoteWithValues(entry, type));
  return lines;
}

}  // namespace varnlog::logview
