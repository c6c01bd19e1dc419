#include "report/PdfLanguage.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>

namespace varnlog::report {

namespace {

constexpr std::size_t kEntryBytes = 20;  // of one line of the table of objects

/// What stands in `text` between the two words; nothing when they do not.
std::optional<std::string> Between(const std::string& text, std::string_view begin, std::string_view end) {
  const std::size_t from = text.rfind(begin);
  if (from == std::string::npos) return std::nullopt;
  const std::size_t to = text.find(end, from + begin.size());
  if (to == std::string::npos) return std::nullopt;
  return text.substr(from + begin.size(), to - from - begin.size());
}

std::optional<std::uint64_t> NumberAt(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \r\n"), text.size()));
  std::uint64_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

/// The end of a PDF and the object that all others hang on.
class Tail {
 public:
  Tail(const platform::File& pdf, std::error_code& error) : pdf_(pdf), error_(error), size_(pdf.Size(error)) {
    constexpr std::uint64_t kTail = 1'024;
    const std::string tail = Read(size_ - std::min(size_, kTail), kTail);
    const auto trailer = Between(tail, "trailer", "startxref");
    const auto table = NumberAt(Between(tail, "startxref", "%%EOF").value_or(""));
    const auto root = NumberAt(Between(trailer.value_or(""), "/Root", "R").value_or(""));
    if (!trailer || !table || !root) return;
    trailer_ = *trailer;
    table_ = *table;
    root_ = *root;
    FindCatalog();
  }

  [[nodiscard]] bool IsKnown() const { return !catalog_.empty(); }

  /// What makes the document one in that language, to be written behind its end.
  [[nodiscard]] std::string Update(std::string_view tag) const {
    const std::string number = std::to_string(root_);
    std::string update =
        number + " 0 obj\n" + Extended(catalog_, "/Lang (" + std::string(tag) + ")") + "endobj\n";
    std::string place = std::to_string(size_);
    place.insert(0, 10 - std::min<std::size_t>(10, place.size()), '0');
    const std::uint64_t table = size_ + update.size();
    update += "xref\n" + number + " 1\n" + place + " 00000 n \ntrailer\n" +
              Extended(trailer_, "/Prev " + std::to_string(table_)) + "startxref\n" + std::to_string(table) +
              "\n%%EOF\n";
    return update;
  }
  [[nodiscard]] std::uint64_t size() const { return size_; }

 private:
  [[nodiscard]] std::string Read(std::uint64_t place, std::size_t count) const {
    std::string bytes(count, '\0');
    if (!error_) bytes.resize(pdf_.ReadAt(place, bytes, error_));
    return bytes;
  }

  void FindCatalog() {
    constexpr std::size_t kHead = 64;
    constexpr std::size_t kLongest = 4'096;
    const std::string head = Read(table_, kHead);
    const std::size_t entries = head.find('\n', head.find('\n') + 1) + 1;
    if (!head.starts_with("xref\n0 ")) return;
    const auto place = NumberAt(Read(table_ + entries + root_ * kEntryBytes, kEntryBytes));
    if (!place) return;
    const std::string object = Read(*place, kLongest);
    const std::string first = std::to_string(root_) + " 0 obj";
    if (!object.starts_with(first) || object.find("/Catalog") == std::string::npos) return;
    catalog_ = object.substr(first.size(), object.find("endobj") - first.size());
  }

  /// The dictionary with one entry more.
  static std::string Extended(std::string dictionary, const std::string& entry) {
    dictionary.insert(std::min(dictionary.rfind(">>"), dictionary.size()), entry + "\n");
    return dictionary;
  }

  const platform::File& pdf_;
  std::error_code& error_;
  std::uint64_t size_ = 0;
  std::uint64_t table_ = 0;
  std::uint64_t root_ = 0;
  std::string trailer_;
  std::string catalog_;
};

}  // namespace

void AddPdfLanguage(platform::File& pdf, std::string_view tag, std::error_code& error) {
  const Tail tail(pdf, error);
  if (!error && !tail.IsKnown()) error = std::make_error_code(std::errc::not_supported);
  if (!error) pdf.WriteAt(tail.size(), tail.Update(tag), error);
}

}  // namespace varnlog::report
