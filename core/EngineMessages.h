#pragma once

#include <string>
#include <string_view>

#include "core/TextLookup.h"
#include "db/CJetEngine.h"
#include "db/dao/EngineError.h"

namespace varnlog::core {

/// What the user is told about an engine error: its number, and what it means in the current language.
/// `detail`, the engine's own words, stands for what nobody has foreseen, and behind why a server is not
/// there.
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, dao::ErrorNumber number,
                                          std::string_view detail);
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, const dao::EngineError& error);
/// The same for the last error that the engine has trapped.
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, const db::CJetEngine& engine);
/// That error itself, for who has no texts at hand.
[[nodiscard]] dao::EngineError TrappedError(const db::CJetEngine& engine);

}  // namespace varnlog::core
