#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/faults/shim/Calls.h"

namespace varnlog::faults {

/// What happens at the next call: the real thing when both are unset.
struct Verdict {
  int error = 0;  // an errno, or kHalf
  std::uint64_t number = 0;
};

/// The plan of this run. Reads it from the environment; needs no memory of its own.
class Orders {
 public:
  void Load(const char* plan);
  /// Counts the call, kills the process if that is the plan, lets exposures arrive.
  Verdict At(Call call);
  /// The same for an allocation; true when it is to fail.
  bool FailsAllocation();
  [[nodiscard]] std::uint64_t Allocations() const { return allocations_; }

 private:
  enum class Kind : std::uint8_t { kError, kKill, kArrive };
  struct Order {
    bool allocation = false;
    bool always = false;
    Kind kind = Kind::kError;
    int error = 0;
    std::uint64_t number = 0;

    [[nodiscard]] bool Meets(std::uint64_t count) const { return always ? count >= number : count == number; }
  };
  static const char* Parse(const char* text, Order& order);

  static constexpr std::size_t kMost = 32;
  std::array<Order, kMost> orders_{};
  std::size_t count_ = 0;
  std::uint64_t calls_ = 0;
  std::uint64_t allocations_ = 0;
};

/// The bytes that $VARNLOG_FAULTS_ARRIVAL names are appended to the exchange file, as the suite does it.
void LetExposuresArrive(std::uint64_t number);

}  // namespace varnlog::faults
