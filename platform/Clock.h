#pragma once

#include "platform/DateTime.h"

namespace varnlog::platform {

/// A moment that means the same everywhere, and the local time that people had at it.
struct Instant {
  DateTime utc;
  int offsetMinutes = 0;  // local time is UTC plus this
};

/// The clock is handed to whatever needs to know what day it is, so that a test can choose the day.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Local date and time.
  [[nodiscard]] virtual DateTime Now() const = 0;
  /// Unless a clock knows better its local time is UTC.
  [[nodiscard]] virtual Instant NowUtc() const { return {Now(), 0}; }
  [[nodiscard]] DateTime Today() const { return Now().DatePart(); }
};

class SystemClock final : public Clock {
 public:
  [[nodiscard]] DateTime Now() const override;
  [[nodiscard]] Instant NowUtc() const override;
};

/// A clock that stands still, for tests and for jobs that must use one moment throughout.
class FixedClock final : public Clock {
 public:
  explicit FixedClock(DateTime now) : now_(now) {}
  [[nodiscard]] DateTime Now() const override { return now_; }

 private:
  DateTime now_;
};

}  // namespace varnlog::platform
