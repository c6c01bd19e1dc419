#include "report/QrCode.h"

#include <memory>

#include <qrencode.h>

namespace varnlog::report {

QrCode MakeQrCode(const std::string& text) {
  constexpr int kSmallestVersion = 0;
  constexpr unsigned char kDarkBit = 1;
  const std::unique_ptr<QRcode, decltype(&QRcode_free)> made(
      QRcode_encodeString(text.c_str(), kSmallestVersion, QR_ECLEVEL_M, QR_MODE_8, 1), &QRcode_free);
  QrCode code;
  if (!made) return code;
  code.width = made->width;
  const std::size_t modules = static_cast<std::size_t>(made->width) * static_cast<std::size_t>(made->width);
  for (std::size_t i = 0; i < modules; ++i) code.dark.push_back((made->data[i] & kDarkBit) != 0);
  return code;
}

}  // namespace varnlog::report
