#include "exports/RowWriter.h"
#include "platform/CodePage.h"
#include "platform/Terminal.h"

namespace varnlog::exports {

namespace {

/// Spreadsheets run a cell that begins so, whoever typed the name or comment that is in it. A sign alone,
/// such as the "-" of a value that does not apply, is text to them.
bool LooksLikeFormula(std::string_view text) {
  return text.size() > 1 && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos;
}

bool NeedsQuotes(std::string_view text, char separator) {
  return text.find(separator) != std::string_view::npos ||
         text.find_first_of("\"\r\n") != std::string_view::npos ||
         (!text.empty() && (text.front() == ' ' || text.back() == ' '));
}

class CsvWriter final : public RowWriter {
 public:
  CsvWriter(TextSink& output, const CsvForm& form) : output_(output), form_(form) {}

  void Begin(const std::vector<std::string>& headings) override {
    if (form_.byteOrderMark) output_.Write(platform::kByteOrderMark);
    for (const std::string& heading : headings) AppendCell(heading);
    EndLine();
  }

  void Add(const Row& row) override {
    for (const Cell& cell : row) {
      if (form_.values == Values::kRaw || cell.kind == Cell::Kind::kNumber) {
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
    if (!isFirst_) line_ += form_.separator;
    isFirst_ = false;
    if (!NeedsQuotes(text, form_.separator)) {
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

  TextSink& output_;
  CsvForm form_;
  std::string line_;
  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<RowWriter> MakeCsvWriter(TextSink& output, const CsvForm& form) {
  return std::make_unique<CsvWriter>(output, form);
}

}  // namespace varnlog::exports
