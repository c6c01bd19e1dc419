#include <algorithm>

#include "cli/ListFormats.h"
#include "platform/Terminal.h"

namespace varnlog::cli {

namespace {

using exports::Cell;
using exports::Row;
using exports::RowWriter;
using exports::Values;

constexpr std::string_view kGap = "  ";

class TableWriter final : public RowWriter {
 public:
  TableWriter(Output& output, Values values) : output_(output), values_(values) {}

  void Begin(const std::vector<std::string>& headings) override {
    for (const std::string& heading : headings) headings_.push_back({.text = heading});
    widths_.resize(headings.size());
    Measure(headings_);
  }

  [[nodiscard]] bool NeedsMeasure() const override { return true; }

  void Measure(const Row& row) override {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths_[i] = std::max(widths_[i], platform::DisplayWidth(Shown(row[i].text)));
    }
  }

  void Add(const Row& row) override {
    BeginTable();
    line_.clear();
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i > 0) line_ += kGap;
      AppendCell(row[i], widths_[i]);
    }
    line_.erase(line_.find_last_not_of(' ') + 1);
    line_ += '\n';
    output_.Write(line_);
  }

  void End() override { BeginTable(); }

 private:
  [[nodiscard]] std::string Shown(const std::string& text) const {
    return values_ == Values::kRaw ? text : platform::PrintableText(text);
  }

  /// The headings wait until every row has been measured.
  void BeginTable() {
    if (hasBegun_) return;
    hasBegun_ = true;
    Add(headings_);
    std::string rule;
    for (const std::size_t width : widths_) {
      if (!rule.empty()) rule += kGap;
      rule.append(width, '-');
    }
    output_.Write(rule += '\n');
  }

  void AppendCell(const Cell& cell, std::size_t width) {
    const std::string text = Shown(cell.text);
    const std::size_t used = platform::DisplayWidth(text);
    const std::string padding(width > used ? width - used : 0, ' ');
    line_ += cell.kind == Cell::Kind::kNumber ? padding + text : text + padding;
  }

  Output& output_;
  Values values_;
  Row headings_;
  std::vector<std::size_t> widths_;
  std::string line_;
  bool hasBegun_ = false;
};

}  // namespace

std::unique_ptr<RowWriter> MakeRowWriter(ListFormat format, Values values, Output& output) {
  switch (format) {
    case ListFormat::kCsv:
      return exports::MakeCsvWriter(output, {.values = values});
    case ListFormat::kJson:
      return exports::MakeJsonWriter(output);
    case ListFormat::kTable:
      break;
  }
  return std::make_unique<TableWriter>(output, values);
}

}  // namespace varnlog::cli
