#include "platform/Paper.h"

#include <unicode/ulocdata.h>

namespace varnlog::platform {

Paper PaperOf(const std::string& locale) {
  constexpr std::int32_t kLetterHeight = 279;  // mm
  if (locale.empty()) return Paper::kA4;       // not ICU's own default
  UErrorCode error = U_ZERO_ERROR;
  std::int32_t height = 0;
  std::int32_t width = 0;
  ulocdata_getPaperSize(locale.c_str(), &height, &width, &error);
  return U_SUCCESS(error) != 0 && height == kLetterHeight ? Paper::kLetter : Paper::kA4;
}

}  // namespace varnlog::platform
