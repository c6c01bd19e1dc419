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

/// Whether values are written as they are stored, or so that what reads them cannot be made to obey them.
enum class Values { kHarmless, kRaw };

/// Comma-separated values: a heading line, CRLF line ends, quotes where a value needs them. NULL is empty. A
/// harmless text that a spreadsheet would take for a formula has an apostrophe before it; control characters
/// other than tabs and line breaks become blanks.
[[nodiscard]] std::unique_ptr<RowWriter> MakeCsvWriter(Output& output, Values values);
/// An array of objects, one row a line. NULL is null, numbers stand without quotes.
[[nodiscard]] std::unique_ptr<RowWriter> MakeJsonWriter(Output& output);
/// Columns aligned for a terminal. In harmless values control characters become blanks.
[[nodiscard]] std::unique_ptr<RowWriter> MakeTableWriter(Output& output, Values values);

[[nodiscard]] std::unique_ptr<RowWriter> MakeRowWriter(ListFormat format, Values values, Output& output);

}  // namespace varnlog::cli
