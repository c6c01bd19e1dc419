#include "seals/LineSeal.h"

#include <zlib.h>

#include "seals/Canonical.h"

namespace varnlog::seals {

void AppendMark(std::string& marks, std::string_view line) {
  constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto sum = static_cast<std::uint32_t>(
      crc32_z(0, reinterpret_cast<const Bytef*>(line.data()), static_cast<z_size_t>(line.size())));
  for (const unsigned shift : {26U, 20U, 14U}) marks += kLetters[(sum >> shift) & 63U];
}

void LineSeal::Add(std::span<const dao::CellView> values) {
  line_.clear();
  AppendLine(line_, values);
  digest_.Add(line_);
  AppendMark(marks_, line_);
  last_ = NumberOf(values[0]);
  if (count_++ == 0) first_ = last_;
}

std::string LineSeal::Digest() {
  return count_ == 0 ? std::string() : digest_.Hex();
}

}  // namespace varnlog::seals
