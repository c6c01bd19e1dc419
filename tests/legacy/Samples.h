#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "legacy/JetDatabase.h"

namespace varnlog::legacy::samples {

/// The sample files that every checkout has.
[[nodiscard]] std::filesystem::path Folder();

/// A file's bytes; one whose name ends in ".gz" is unpacked.
[[nodiscard]] std::string Read(const std::filesystem::path& path);
/// The same for a sample in Folder().
[[nodiscard]] std::string ReadOurs(const std::string& name);

[[nodiscard]] inline Bytes AsBytes(const std::string& content) {
  return std::as_bytes(std::span(content.data(), content.size()));
}

/// A value as the expectation files write it: \N for NULL, 1 and 0, ISO dates, \t \n \r \\ escaped.
[[nodiscard]] std::string Render(const Value& value, ColumnType type);

/// Every table of a database in the form of an expectation file, rows sorted as lines.
[[nodiscard]] std::vector<std::string> RenderTables(const JetDatabase& database, FaultList& faults);

/// An expectation file, rows sorted as lines.
[[nodiscard]] std::vector<std::string> Expected(const std::string& content);

}  // namespace varnlog::legacy::samples
