#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/Options.h"
#include "cli/Output.h"

namespace varnlog::cli {

/// One value of a row as it is to be written.
struct Cell {
  std::string text;
  bool isNull = false;
  bool isNumber = false;
};

using Row = std::vector<Cell>;

/// Writes rows in one format: Begin, then Add for each row, then End.
class RowWriter {
 public:
  virtual ~RowWriter() = default;
  virtual void Begin(const std::vector<std::string>& headings) = 0;
  virtual void Add(const Row& row) = 0;
  virtual void End() = 0;

  /// True for a writer that has to see every row once before the first is written: Measure for each row
  /// comes between Begin and the first Add.
  [[nodiscard]] virtual bool NeedsMeasure() const { return false; }
  virtual void Measure(const Row& /*row*/) {}
};

/// Comma-separated values: a heading line, CRLF line ends, quotes where a value needs them. NULL is empty.
[[nodiscard]] std::unique_ptr<RowWriter> MakeCsvWriter(Output& output);
/// An array of objects, one row a line. NULL is null, numbers stand without quotes.
[[nodiscard]] std::unique_ptr<RowWriter> MakeJsonWriter(Output& output);
/// Columns aligned for a terminal. Control characters in values become blanks.
[[nodiscard]] std::unique_ptr<RowWriter> MakeTableWriter(Output& output);

[[nodiscard]] std::unique_ptr<RowWriter> MakeRowWriter(ListFormat format, Output& output);

}  // namespace varnlog::cli
