#include "intake/RunMark.h"

#include <algorithm>
#include <charconv>

#include "core/LogConfig.h"
#include "db/dao/ServerLink.h"

namespace varnlog::intake {

namespace {

constexpr std::string_view kRunKey = "IntakeRun";

std::string AppliedKey(std::size_t number) {
  return "IntakeApplied" + std::to_string(number);
}

}  // namespace

RunId ReadRunMark(dao::Database& log, const RunId& asked) {
  const std::string runs = core::ReadLogConfig(log, kRunKey).value_or("");
  const bool isOne = !asked.empty() && runs.find(asked) != std::string::npos;
  return isOne ? asked : runs.substr(0, runs.find(' '));
}

void WriteRunMark(dao::Database& log, const RunId& id) {
  constexpr std::size_t kMost = 7 * 33 - 1;
  std::string runs = id;
  if (dao::IsServerLink(log.Name())) runs += ' ' + core::ReadLogConfig(log, kRunKey).value_or("");
  runs.resize(std::min(runs.size(), kMost));
  core::WriteLogConfig(log, kRunKey, runs);
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
