#include "cli/Output.h"

#include <cerrno>

namespace varnlog::cli {

void Output::Write(std::string_view text) {
  buffer_.append(text);
  if (buffer_.size() >= kBufferSize) Drain();
}

void Output::Flush() {
  Drain();
  if (std::fflush(file_) != 0) throw OutputError(errno, std::generic_category());
}

void Output::Drain() {
  const std::size_t written = std::fwrite(buffer_.data(), 1, buffer_.size(), file_);
  if (written != buffer_.size()) throw OutputError(errno, std::generic_category());
  buffer_.clear();
}

}  // namespace varnlog::cli
