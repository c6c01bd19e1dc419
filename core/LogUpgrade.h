#pragma once

#include <string>

#include "db/CJetEngine.h"

namespace varnlog::core {

/// Brings the log that is open in `engine` from version "1.0" to "1.1". False when it lacks TConfig or TXray,
/// or did not open again. A log that cannot be changed stays "1.0".
[[nodiscard]] bool UpgradeDataFile(db::CJetEngine& engine, const std::string& file);

}  // namespace varnlog::core
