#pragma once

#include "start/StartUp.h"

namespace varnlog::start {

/// Makes an open log ready for changes that are sealed and tells the user what was found: what has no seal,
/// what is wrong with the newest seals. A log that cannot be sealed is for reading only from then on.
void PrepareSeals(core::Globals& globals, const Services& services);

/// False, after a warning, when the open log no longer holds the last state that this workstation has seen of
/// it, as an older copy that was put back does not. That the work goes on is sealed. Who then remembers the
/// new head is not warned again.
bool CheckLastHead(const core::Globals& globals, const Services& services);
/// Keeps the newest seal of the open log in the workstation's own key of the log's section of the INI file.
void RememberHead(const core::Globals& globals, core::SettingsStore& ini);

}  // namespace varnlog::start
