#pragma once

#include <string>
#include <string_view>

#include "core/TextLookup.h"
#include "db/CJetEngine.h"
#include "db/dao/EngineError.h"

namespace varnlog::core {

/// What the user is told about an engine error: its number, and what it means in the current language.
/// `detail`, the engine's own words, stands for what nobody has foreseen, and as WithDetail() behind why a
/// server is not there. `consequence` comes before it.
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, dao::ErrorNumber number,
                                          std::string_view detail, const std::string& consequence = {});
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, const dao::EngineError& error);
/// The same for the last error that the engine has trapped.
[[nodiscard]] std::string EngineErrorText(const TextLookup& texts, const db::CJetEngine& engine);
/// That error itself, for who has no texts at hand.
[[nodiscard]] dao::EngineError TrappedError(const db::CJetEngine& engine);

/// The text, and behind it the words of the engine or of a server, in whatever language they are, as what
/// they are.
[[nodiscard]] std::string WithDetail(const TextLookup& texts, const std::string& text,
                                     std::string_view detail);
/// Whether a server may well give later what it was asked for.
[[nodiscard]] bool IsServerAway(dao::ErrorNumber number);

}  // namespace varnlog::core
