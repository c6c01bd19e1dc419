#pragma once

#include <functional>
#include <string>

#include "legacy/Conversion.h"
#include "start/StartUp.h"

namespace varnlog::start {

/// How a file that was chosen as the log is to be opened.
enum class OpenAs {
  kLog,      // like any other
  kOldLog,   // an old log that is write-protected: for reading only
  kNothing,  // not at all; the user has decided so or knows why
};

/// Shows how far the conversion is that it runs.
using ShowConversion = std::function<void(const std::function<void(legacy::ConversionView&)>& conversion)>;

/// To be called before a log is opened. An old log is converted in its place if the user wants that; any
/// other file is left to those who open it. The file must not be open in this program.
[[nodiscard]] OpenAs PrepareDataFile(const core::Globals& globals, const Services& services,
                                     const std::string& file, const ShowConversion& show);

/// Tells the user that an old log that was opened is shown only.
void TellOldLogIsProtected(const Services& services, const std::string& file);

}  // namespace varnlog::start
