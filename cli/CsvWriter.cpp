#include "cli/RowWriter.h"

namespace varnlog::cli {

namespace {

bool NeedsQuotes(std::string_view text) {
  return text.find_first_of(",\"\r\n") != std::string_view::npos ||
         (!text.empty() && (text.front() == ' ' || text.back() == ' '));
}

class CsvWriter final : public RowWriter {
 public:
  explicit CsvWriter(Output& output) : output_(output) {}

  void Begin(const std::vector<std::string>& headings) override {
    for (const std::string& heading : headings) Append(heading);
    EndLine();
  }

  void Add(const Row& row) override {
    for (const Cell& cell : row) Append(cell.text);
    EndLine();
  }

  void End() override {}

 private:
  void Append(std::string_view text) {
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
  std::string line_;
  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<RowWriter> MakeCsvWriter(Output& output) {
  return std::make_unique<CsvWriter>(output);
}

std::unique_ptr<RowWriter> MakeRowWriter(ListFormat format, Output& output) {
  switch (format) {
    case ListFormat::kCsv:
      return MakeCsvWriter(output);
    case ListFormat::kJson:
      return MakeJsonWriter(output);
    case ListFormat::kTable:
      break;
  }
  return MakeTableWriter(output);
}

}  // namespace varnlog::cli
