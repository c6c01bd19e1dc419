#pragma once

#include <string_view>
#include <system_error>

#include "platform/Files.h"

namespace varnlog::report {

/// Says in a finished PDF which language its text is in, so that it is read aloud in that language: `tag` as
/// in RFC 5646. Done as an update behind the file's end (ISO 32000-1, 7.5.6), since the writer has no means
/// for it. Fails with std::errc::not_supported, the file unchanged, when it has not the form the writer
/// makes.
void AddPdfLanguage(platform::File& pdf, std::string_view tag, std::error_code& error);

}  // namespace varnlog::report
