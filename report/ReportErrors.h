#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "core/TextLookup.h"

namespace varnlog::report {

/// The report could not be written to its file; the file is as it was before.
class SaveError : public std::runtime_error {
 public:
  SaveError(std::string file, const std::string& reason)
      : std::runtime_error(reason), file_(std::move(file)) {}
  [[nodiscard]] const std::string& file() const { return file_; }

 private:
  std::string file_;
};

/// The printer, or whatever is drawn on, refused.
class PrintError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What to tell the user about a failure of the report; the bare reason for one of no kind of its own, such
/// as an engine error.
[[nodiscard]] std::string ReportErrorText(const core::TextLookup& texts, const std::exception& error);

}  // namespace varnlog::report
