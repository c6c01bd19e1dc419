#pragma once

#include <string>

namespace varnlog::logview {

/// A correction that is stored already and whose value is still to be locked.
struct CEdit {
  std::string ID;     // tXrayCulIntIDPk of the row
  std::string Field;  // the edit flag to clear, such as "tXrayBEdVolt"

  [[nodiscard]] std::string Key() const { return ID + "," + Field; }
  friend bool operator==(const CEdit&, const CEdit&) = default;
};

}  // namespace varnlog::logview
