#include "cli/RowWriter.h"
#include "platform/Terminal.h"

namespace varnlog::cli {

namespace {

/// Spreadsheets run a cell that begins so, whoever typed the name or comment that is in it. A sign alone,
/// such as the "-" of a value that does not apply, is text to them.
bool LooksLikeFormula(std::string_view text) {
  return text.size() > 1 && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos;
}

bool NeedsQuotes(std::string_view text) {
  return text.find_first_of(",\"\r\n") != std::string_view::npos ||
         (!text.empty() && (text.front() == ' ' || text.back() == ' '));
}

class CsvWriter final : public RowWriter {
 public:
  CsvWriter(Output& output, Values values) : output_(output), values_(values) {}

  void Begin(const std::vector<std::string>& headings) override {
    for (const std::string& heading : headings) AppendCell(heading);
    EndLine();
  }

  void Add(const Row& row) override {
    for (const Cell& cell : row) {
      if (values_ == Values::kRaw || cell.isNumber) {
        AppendCell(cell.text);
      } else {
        AppendCell((LooksLikeFormula(cell.text) ? "'" : "") + platform::PrintableText(cell.text, "\t\r\n"));
      }
    }
    EndLine();
  }

  void End() override {}

 private:
  void AppendCell(std::string_view text) {
    if (!isFirst_) line_ += ',';
    isFirst_ = false;
    if (!NeedsQuotes(text)) {
      line_ += text;
      return;
    }
    line_ += '"';
    for (const char c : text) {
      if (c == '"') line_ += '"';
      line_ += c;
    }
    line_ += '"';
  }

  void EndLine() {
    line_ += "\r\n";
    output_.Write(line_);
    line_.clear();
    isFirst_ = true;
  }

  Output& output_;
  Values values_;
  std::string line_;
  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<RowWriter> MakeCsvWriter(Output& output, Values values) {
  return std::make_unique<CsvWriter>(output, values);
}

std::unique_ptr<RowWriter> MakeRowWriter(ListFormat format, Values values, Output& output) {
  switch (format) {
    case ListFormat::kCsv:
      return MakeCsvWriter(output, values);
    case ListFormat::kJson:
      return MakeJsonWriter(output);
    case ListFormat::kTable:
      break;
  }
  return MakeTableWriter(output, values);
}

}  // namespace varnlog::cli
