#include <array>
#include <memory>

#include <unicode/unum.h>

#include "platform/ListSeparator.h"
#include "platform/posix/SystemLocale.h"

namespace varnlog::platform {
namespace {

struct FormatCloser {
  void operator()(UNumberFormat* format) const { unum_close(format); }
};

UChar DecimalSeparator(const std::string& locale) {
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<UNumberFormat, FormatCloser> format(
      unum_open(UNUM_DECIMAL, nullptr, 0, locale.c_str(), nullptr, &error));
  if (U_FAILURE(error) != 0) return 0;
  std::array<UChar, 8> symbol{};
  unum_getSymbol(format.get(), UNUM_DECIMAL_SEPARATOR_SYMBOL, symbol.data(),
                 static_cast<int32_t>(symbol.size()), &error);
  return U_FAILURE(error) != 0 ? UChar{0} : symbol.front();
}

}  // namespace

char ListSeparator() {
  const std::string locale = SystemLocale("LC_NUMERIC");
  return locale.empty() || DecimalSeparator(locale) == u',' ? ';' : ',';
}

}  // namespace varnlog::platform
