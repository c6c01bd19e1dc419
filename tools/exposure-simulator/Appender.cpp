#include "tools/exposure-simulator/Appender.h"

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "platform/Files.h"

namespace varnlog::tools {

namespace {

[[noreturn]] void Fail(const std::filesystem::path& file) {
  throw std::system_error(errno == 0 ? EIO : errno, std::generic_category(), platform::FromPath(file));
}

}  // namespace

void Appender::Append(std::string_view bytes) {
  if (habits_.takesLock) {
    WriteLocked(bytes);
  } else {
    Write(bytes);
  }
}

void Appender::Write(std::string_view bytes) {
  errno = 0;
  if (!stream_.is_open()) {
    // Unbuffered, so that a record is one write; a reader never meets half of one.
    stream_.rdbuf()->pubsetbuf(nullptr, 0);
    stream_.open(file_, std::ios::binary | std::ios::app);
  }
  if (!stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()))) Fail(file_);
  if (!habits_.holdsFile) {
    stream_.close();
    if (!stream_) Fail(file_);
  }
}

void Appender::WriteLocked(std::string_view bytes) {
  using namespace std::chrono_literals;
  if (!std::filesystem::exists(file_)) std::ofstream(file_, std::ios::binary | std::ios::app);
  std::error_code error;
  platform::File lock = platform::File::Open(file_, platform::File::Mode::kReadWrite, error);
  if (error) throw std::system_error(error, platform::FromPath(file_));
  while (!lock.TryLockRange(0, 1, error)) {
    if (error) throw std::system_error(error, platform::FromPath(file_));
    std::this_thread::sleep_for(1ms);
  }
  Write(bytes);
  lock.UnlockRange(0, 1);
}

}  // namespace varnlog::tools
