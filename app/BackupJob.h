#pragma once

#include <functional>
#include <string>

#include <QProcess>

#include "core/Globals.h"

namespace varnlog::app {

/// Makes a copy of the log in a process of its own, so that no window waits for it. Ends with this object;
/// what was not finished then leaves nothing behind.
class BackupJob {
 public:
  /// `ended` gets whether it was made, and what was said: the copy's path or the reason.
  using Ended = std::function<void(bool made, const std::string& said)>;

  explicit BackupJob(const core::Globals& globals) : globals_(globals) {}

  [[nodiscard]] bool IsRunning() const { return process_.state() != QProcess::NotRunning; }
  /// Of the log that is open, into the folder; false while one is running.
  bool Start(const std::string& folder, Ended ended);

 private:
  const core::Globals& globals_;
  QProcess process_;
};

}  // namespace varnlog::app
