#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "core/TextLookup.h"
#include "db/dao/Recordset.h"
#include "exports/RowSource.h"
#include "platform/SafeFile.h"

namespace varnlog::exports {

enum class Format { kXlsx, kCsv, kJson };

/// By the file's ending, letter case ignored; nothing for any other than .xlsx, .csv and .json.
[[nodiscard]] std::optional<Format> FormatOf(std::string_view file);

/// What is handed over, and what stands on a workbook's sheet about it.
struct ExportJob {
  dao::Recordset& rows;
  const RowSource& source;  // over `rows`
  const core::TextLookup& texts;
  std::string site;       // the practice
  std::string selection;  // what the rows are, in words
  std::string day;        // of the export, as dates are shown
};

struct ExportTarget {
  std::string file;
  Format format = Format::kXlsx;
  platform::IfTaken ifTaken = platform::IfTaken::kFail;
  std::string log;  // whoever may read this file may read the export
  char listSeparator = ';';
};

class ExportProgress {
 public:
  virtual ~ExportProgress() = default;
  /// False stops the export.
  [[nodiscard]] virtual bool Exported(std::int64_t rowsDone, std::int64_t rows) = 0;
};

/// The file could not be written; what was there under its name before is still there.
class ExportError : public std::runtime_error {
 public:
  ExportError(std::string file, const std::string& reason)
      : std::runtime_error(reason), file_(std::move(file)) {}
  [[nodiscard]] const std::string& file() const { return file_; }

 private:
  std::string file_;
};

/// What to tell the user about a failure of an export.
[[nodiscard]] std::string ExportErrorText(const core::TextLookup& texts, const std::exception& error);

/// Writes all rows, from the first one on. The rows written, or nothing when it was stopped; no file is left
/// then. Memory does not grow with the rows. Throws ExportError and dao::EngineError.
[[nodiscard]] std::optional<std::int64_t> Export(const ExportJob& job, const ExportTarget& target,
                                                 ExportProgress& progress);

}  // namespace varnlog::exports
