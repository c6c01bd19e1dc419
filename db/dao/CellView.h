#pragma once

#include <cstdint>
#include <string_view>

namespace varnlog::dao {

enum class CellKind : std::uint8_t {
  kNull,
  kInteger,
  kReal,
  kText,
  kBytes,    // only what another program left there
  kDeleted,  // the row was gone when it was read
};

/// One value as it is stored.
struct CellView {
  CellKind kind = CellKind::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text;
  friend bool operator==(const CellView&, const CellView&) = default;
};

}  // namespace varnlog::dao
