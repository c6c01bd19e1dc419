#pragma once

#include <optional>
#include <string>

namespace varnlog::logview {

/// A correction that is stored already and whose value is still to be locked.
struct CEdit {
  std::string ID;     // tXrayCulIntIDPk of the row
  std::string Field;  // the edit flag to clear, such as "tXrayBEdVolt"
  /// The stored value before the first of these corrections; nothing stands for Null.
  std::optional<std::string> Before = std::nullopt;

  [[nodiscard]] std::string Key() const { return ID + "," + Field; }
  friend bool operator==(const CEdit&, const CEdit&) = default;
};

}  // namespace varnlog::logview
