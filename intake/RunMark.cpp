#include "intake/RunMark.h"

#include <charconv>

#include "core/LogConfig.h"

namespace varnlog::intake {

namespace {

constexpr std::string_view kRunKey = "IntakeRun";

std::string AppliedKey(std::size_t number) {
  return "IntakeApplied" + std::to_string(number);
}

}  // namespace

RunId ReadRunMark(dao::Database& log) {
  return core::ReadLogConfig(log, kRunKey).value_or(RunId());
}

void WriteRunMark(dao::Database& log, const RunId& id) {
  core::WriteLogConfig(log, kRunKey, id);
}

std::vector<AppliedBytes> ReadAppliedBytes(dao::Database& log) {
  std::vector<AppliedBytes> all;
  for (;;) {
    const std::string note = core::ReadLogConfig(log, AppliedKey(all.size() + 1)).value_or("");
    AppliedBytes applied;
    const char* const end = note.data() + note.size();
    const auto [rest, error] = std::from_chars(note.data(), end, applied.length);
    if (error != std::errc() || rest == end) return all;
    applied.digest.assign(rest + 1, end);
    all.push_back(std::move(applied));
  }
}

/// A note that is no longer needed becomes empty.
void WriteAppliedBytes(dao::Database& log, const std::vector<AppliedBytes>& applied) {
  const std::vector<AppliedBytes> before = ReadAppliedBytes(log);
  if (before == applied) return;
  for (std::size_t i = 0; i < applied.size(); ++i) {
    core::WriteLogConfig(log, AppliedKey(i + 1), std::to_string(applied[i].length) + ' ' + applied[i].digest);
  }
  if (before.size() > applied.size()) core::WriteLogConfig(log, AppliedKey(applied.size() + 1), "");
}

}  // namespace varnlog::intake
