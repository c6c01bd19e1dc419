#include "seals/LineSeal.h"

#include <utility>
#include <zlib.h>

#include "seals/Canonical.h"

namespace varnlog::seals {

namespace {

// Starting the thread costs a hundredth of what it then does.
constexpr std::size_t kHandedOver = 256 * 1024;

}  // namespace

void AppendMark(std::string& marks, std::string_view line) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto sum = static_cast<std::uint32_t>(
      crc32_z(0, reinterpret_cast<const Bytef*>(line.data()), static_cast<z_size_t>(line.size())));
  for (const unsigned shift : {26U, 20U, 14U}) marks += kLetters[(sum >> shift) & 63U];
}

void LineSeal::Sums::Add(const Lines& more) {
  digest.Add(more.bytes);
  std::size_t begin = 0;
  for (const std::size_t end : more.ends) {
    AppendMark(marks, std::string_view(more.bytes).substr(begin, end - begin));
    begin = end;
  }
}

void LineSeal::Add(std::span<const dao::CellView> values) {
  AppendLine(lines_.bytes, values);
  lines_.ends.push_back(lines_.bytes.size());
  last_ = NumberOf(values[0]);
  if (count_++ == 0) first_ = last_;
  if (lines_.bytes.size() >= kHandedOver) HandOver();
}

void LineSeal::HandOver() {
  if (atWork_.valid()) atWork_.get();
  std::swap(lines_, sums_->lines);
  lines_.bytes.clear();
  lines_.ends.clear();
  // Where no thread can be had, get() does it.
  atWork_ =
      std::async(std::launch::async | std::launch::deferred, [sums = sums_] { sums->Add(sums->lines); });
}

void LineSeal::Finish() {
  if (atWork_.valid()) atWork_.get();
  sums_->Add(lines_);
  lines_ = {};
}

const std::string& LineSeal::Marks() {
  Finish();
  return sums_->marks;
}

std::string LineSeal::Digest() {
  Finish();
  return count_ == 0 ? std::string() : sums_->digest.Hex();
}

}  // namespace varnlog::seals
