#pragma once

#include <cstdint>

namespace varnlog::dao {

/// Rows that have been added but wait for more of their kind, because one statement writes many of them in
/// half the time. See Connection::Hold().
class HeldRows {
 public:
  virtual ~HeldRows() = default;
  HeldRows() = default;
  HeldRows(const HeldRows&) = delete;
  HeldRows& operator=(const HeldRows&) = delete;

  [[nodiscard]] virtual std::int64_t Count() const noexcept = 0;
  /// Writes them. None is left, after an EngineError neither.
  virtual void Write() = 0;
  virtual void Drop() noexcept = 0;
};

}  // namespace varnlog::dao
