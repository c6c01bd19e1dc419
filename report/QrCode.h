#pragma once

#include <string>
#include <vector>

namespace varnlog::report {

/// A text as a square of dark and light modules, for cameras and scanners.
struct QrCode {
  int width = 0;  // modules a side; 0 for none
  std::vector<bool> dark;

  [[nodiscard]] bool IsDark(int row, int column) const {
    return dark[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(column)];
  }
};

/// Damage to a seventh of it does not keep it from being read. None for an empty text and one of more than
/// 2000 characters.
[[nodiscard]] QrCode MakeQrCode(const std::string& text);

}  // namespace varnlog::report
