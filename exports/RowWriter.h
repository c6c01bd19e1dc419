#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "exports/TextSink.h"
#include "platform/DateTime.h"

namespace varnlog::exports {

/// One value of a row as it is to be written.
struct Cell {
  enum class Kind {
    kText,
    kNull,
    kNumber,    // a whole number in decimal
    kMeasured,  // a text that holds a number wherever somebody entered one
    kDate,      // `date` as text
  };
  std::string text;
  Kind kind = Kind::kText;
  platform::DateTime date = {};
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

struct CsvForm {
  Values values = Values::kHarmless;
  char separator = ',';
  bool byteOrderMark = false;  // tells spreadsheets that the file is UTF-8
};

/// Separated values: a heading line, CRLF line ends, quotes where a value needs them. NULL is empty. A
/// harmless text that a spreadsheet would take for a formula has an apostrophe before it; control characters
/// other than tabs and line breaks become blanks.
[[nodiscard]] std::unique_ptr<RowWriter> MakeCsvWriter(TextSink& output, const CsvForm& form);
/// An array of objects, one row a line. NULL is null, whole numbers stand without quotes.
[[nodiscard]] std::unique_ptr<RowWriter> MakeJsonWriter(TextSink& output);

}  // namespace varnlog::exports
