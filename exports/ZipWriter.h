#pragma once

#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

#include "platform/DateTime.h"

namespace varnlog::exports {

/// The archive could not be written, or one of its files not be read.
class ZipError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ZipEntry {
  std::string name;  // in the archive; '/' divides folders
  std::filesystem::path file;
};

/// Writes a ZIP archive of these files, each with this time, over whatever `archive` holds. Throws ZipError.
void WriteArchive(const std::filesystem::path& archive, std::span<const ZipEntry> entries,
                  platform::DateTime time);

}  // namespace varnlog::exports
