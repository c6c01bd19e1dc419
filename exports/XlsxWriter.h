#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "exports/RowWriter.h"

namespace varnlog::exports {

/// What a workbook says besides its rows.
struct WorkbookForm {
  std::string sheetName = {};    // of the rows; " 2", " 3", ... are added to those of further sheets
  std::vector<int> widths = {};  // of the columns, in digits; 0 for the usual width
  std::string infoName = {};     // of the sheet with `facts`
  std::vector<std::pair<std::string, std::string>> facts = {};  // label and value, a line each
  std::string rowsLabel = {};                                   // of the line with the number of rows
  std::int64_t rowsPerSheet = (std::int64_t{1} << 20U) - 1;     // the format's limit, without the headings
};

/// The workbook could not be written; `what()` is the reason.
class WorkbookError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A workbook whose cells have types: whole and measured numbers, dates, and texts, which stay texts whatever
/// they look like. Rows go to a nameless file in the target's folder as they come, so memory does not grow
/// with them.
class XlsxWriter final : public RowWriter {
 public:
  /// Nothing is written to `file` before End().
  XlsxWriter(std::filesystem::path file, WorkbookForm form);
  ~XlsxWriter() override;

  void Begin(const std::vector<std::string>& headings) override;
  void Add(const Row& row) override;
  void End() override;

 private:
  class Book;
  std::unique_ptr<Book> book_;
};

}  // namespace varnlog::exports
