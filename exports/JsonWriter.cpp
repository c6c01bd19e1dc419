#include <array>
#include <cstdio>

#include "exports/RowWriter.h"
#include "platform/CodePage.h"

namespace varnlog::exports {

namespace {

std::string_view ShortEscape(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return {};
  }
}

void AppendEscaped(std::string_view text, std::string& out) {
  for (const char c : text) {
    if (const std::string_view escape = ShortEscape(c); !escape.empty()) {
      out += escape;
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      std::array<char, 8> code{};
      std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
      out += code.data();
    } else {
      out += c;
    }
  }
}

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  // A damaged log may hold bytes that are no UTF-8; a reader of JSON would refuse the whole list for them.
  if (platform::IsUtf8(text)) {
    AppendEscaped(text, out);
  } else {
    AppendEscaped(platform::CodePage::Ansi("D").ToUtf8(text), out);
  }
  return out += '"';
}

class JsonWriter final : public RowWriter {
 public:
  explicit JsonWriter(TextSink& output) : output_(output) {}

  void Begin(const std::vector<std::string>& headings) override {
    for (const std::string& heading : headings) keys_.push_back(Quoted(heading) + ":");
    output_.Write("[");
  }

  void Add(const Row& row) override {
    line_ = isFirst_ ? "\n{" : ",\n{";
    isFirst_ = false;
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i > 0) line_ += ',';
      line_ += keys_[i];
      AppendValue(row[i]);
    }
    line_ += '}';
    output_.Write(line_);
  }

  void End() override { output_.Write(isFirst_ ? "]\n" : "\n]\n"); }

 private:
  void AppendValue(const Cell& cell) {
    if (cell.kind == Cell::Kind::kNull) {
      line_ += "null";
    } else if (cell.kind == Cell::Kind::kNumber) {
      line_ += cell.text;
    } else {
      line_ += Quoted(cell.text);
    }
  }

  TextSink& output_;
  std::vector<std::string> keys_;
  std::string line_;
  bool isFirst_ = true;
};

}  // namespace

std::unique_ptr<RowWriter> MakeJsonWriter(TextSink& output) {
  return std::make_unique<JsonWriter>(output);
}

}  // namespace varnlog::exports
