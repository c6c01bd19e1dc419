#include "tests/faults/shim/Orders.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace varnlog::faults {

// "c17=5": call 17 fails with errno 5. "+" after the number: so does every later one that can. "m":
// allocations.
const char* Orders::Parse(const char* text, Order& order) {
  order.allocation = *text++ == 'm';
  char* end = nullptr;
  order.number = std::strtoull(text, &end, 10);
  order.always = *end == '+';
  if (order.always) ++end;
  ++end;  // '='
  order.kind = *end == 'k' ? Kind::kKill : *end == 'a' ? Kind::kArrive : Kind::kError;
  order.error = static_cast<int>(std::strtol(order.kind == Kind::kError ? end : end + 1, &end, 10));
  return *end == ';' ? end + 1 : end;
}

void Orders::Load(const char* plan) {
  while (plan != nullptr && *plan != '\0' && count_ < kMost) plan = Parse(plan, orders_[count_++]);
}

Verdict Orders::At(Call call) {
  Verdict verdict{.error = 0, .number = ++calls_};
  for (std::size_t i = 0; i < count_; ++i) {
    const Order& order = orders_[i];
    if (order.allocation || !order.Meets(verdict.number)) continue;
    if (order.kind == Kind::kKill) syscall(SYS_kill, getpid(), SIGKILL);
    if (order.kind == Kind::kArrive) LetExposuresArrive(verdict.number);
    if (order.kind == Kind::kError && CanAnswer(call, order.error)) verdict.error = order.error;
  }
  return verdict;
}

bool Orders::FailsAllocation() {
  ++allocations_;
  for (std::size_t i = 0; i < count_; ++i) {
    if (orders_[i].allocation && orders_[i].Meets(allocations_)) return true;
  }
  return false;
}

}  // namespace varnlog::faults
