#include "tests/faults/Trace.h"

#include <array>
#include <cstring>
#include <stdexcept>

#include "tests/faults/Files.h"

namespace varnlog::faults {

std::vector<Step> ReadTrace(const std::filesystem::path& file) {
  const std::string content = ReadFile(file);
  std::string_view rest = content;
  const auto take = [&rest](std::size_t size) {
    const std::string_view part = rest.substr(0, size);
    rest.remove_prefix(part.size());
    return std::string(part);
  };
  std::vector<Step> steps;
  StepHead head;
  while (rest.size() >= sizeof(head)) {
    std::memcpy(&head, rest.data(), sizeof(head));
    rest.remove_prefix(sizeof(head));
    Step step{.number = head.number,
              .call = head.call,
              .path = take(head.path),
              .newPath = take(head.newPath),
              .file = head.file,
              .offset = head.offset,
              .bytes = {}};
    step.bytes = take(head.bytes);
    steps.push_back(std::move(step));
  }
  return steps;
}

std::uint64_t Find(const std::vector<Step>& run, Call call, std::string_view ending, int nth) {
  for (const Step& step : run) {
    const std::string& name = step.newPath.empty() ? step.path : step.newPath;
    if (step.call == call && name.ends_with(ending) && --nth == 0) return step.number;
  }
  throw std::runtime_error("the run never comes to the call on *" + std::string(ending));
}

std::string Describe(const std::vector<Step>& run, std::uint64_t number) {
  constexpr std::array kNames = {
      "open", "create", "empty",       "read",    "write", "truncate",         "sync", "close",     "rename",
      "link", "remove", "make folder", "look at", "list",  "owner or mode of", "lock", "arrival at"};
  for (const Step& step : run) {
    if (step.number == number)
      return std::string(kNames[static_cast<std::size_t>(step.call)]) + " " +
             std::filesystem::path(step.path).filename().string();
  }
  return {};
}

}  // namespace varnlog::faults
