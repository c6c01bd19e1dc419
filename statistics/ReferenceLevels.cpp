#include "statistics/ReferenceLevels.h"

#include <algorithm>
#include <array>

#include "logview/MeasuredValue.h"
#include "platform/Files.h"

namespace varnlog::statistics {

namespace {

enum Column : std::size_t { kType, kSince, kDose, kSource, kColumns };

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \r") - first + 1);
}

std::array<std::string_view, kColumns> Fields(std::string_view line) {
  std::array<std::string_view, kColumns> fields;
  for (std::string_view& field : fields) {
    const std::size_t end = std::min(line.find('\t'), line.size());
    field = Trimmed(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return fields;
}

}  // namespace

ReadLevels ReadReferenceLevels(std::string_view text, platform::DateTime today) {
  ReadLevels read;
  int number = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const auto fields = Fields(text.substr(at, end - at));
    at = end + 1;
    if (++number == 1 || fields[kDose].empty()) continue;
    const auto since = platform::DateTime::FromIso(fields[kSince]);
    const auto dose = logview::ReadMeasured(fields[kDose]);
    if (!since || !dose || fields[kType].empty()) {
      read.badLines.push_back(number);
      continue;
    }
    ReferenceLevel& known = read.levels[std::string(fields[kType])];
    if (*since <= today && *since >= known.since) known = {*since, dose->value, std::string(fields[kSource])};
  }
  // Those that do not hold yet.
  std::erase_if(read.levels, [](const auto& level) { return !level.second.since.IsSet(); });
  return read;
}

ReadLevels LoadReferenceLevels(const std::string& file, platform::DateTime today) {
  std::error_code error;
  const auto text = platform::ReadWholeFile(platform::ToPath(file), error);
  return text ? ReadReferenceLevels(*text, today) : ReadLevels();
}

}  // namespace varnlog::statistics
