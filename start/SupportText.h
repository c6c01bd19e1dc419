#pragma once

#include <span>
#include <string>

#include "core/Globals.h"
#include "core/SettingsStore.h"
#include "core/TextLookup.h"
#include "platform/Clock.h"

namespace varnlog::start {

/// Keeps when the open log was verified last on this workstation, and whether nothing was found.
void NoteVerified(const core::Globals& globals, core::SettingsStore& ini, const platform::Clock& clock,
                  bool isSound);

/// What somebody who helps from afar asks for, a line each: `versions`, then where everything lies and how
/// the log is. No patient is named in it.
[[nodiscard]] std::string SupportText(const core::Globals& globals, const core::SettingsStore& ini,
                                      const core::TextLookup& texts, std::span<const std::string> versions);

}  // namespace varnlog::start
