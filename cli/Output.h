#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

#include "exports/TextSink.h"

namespace varnlog::cli {

class OutputError : public std::system_error {
 public:
  using std::system_error::system_error;
};

/// A text stream whose every failure is noticed: a full disk, a pipe whose reader went away. Write and Flush
/// throw OutputError.
class Output final : public exports::TextSink {
 public:
  explicit Output(std::FILE* file) : file_(file) { buffer_.reserve(kBufferSize); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void Write(std::string_view text) override;
  /// To be called at the end; what was not flushed is lost.
  void Flush();

 private:
  static constexpr std::size_t kBufferSize = 64U << 10U;
  void Drain();

  std::FILE* file_;
  std::string buffer_;
};

}  // namespace varnlog::cli
