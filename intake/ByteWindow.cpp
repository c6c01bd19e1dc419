#include "intake/ByteWindow.h"

namespace varnlog::intake {

void ByteWindow::Reset() {
  start_ = 0;
  used_ = 0;
}

bool ByteWindow::Fill(const platform::File& file, std::uint64_t offset, std::size_t length) {
  buffer_.resize(kSize);
  std::error_code error;
  start_ = offset;
  used_ = file.ReadAt(offset, buffer_, error);
  if (error) used_ = 0;
  return length <= used_;
}

}  // namespace varnlog::intake
