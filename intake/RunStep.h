#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace varnlog::intake {

/// The instants of a run between which something on the disk changes, in their order. A test ends the process
/// at each of them and sees that the next run sets things right.
enum class RunStep {
  kRowsWritten,
  kCopyWritten,    // under its temporary name
  kCopySafe,       // under its own name, on the disk
  kShiftPrepared,  // the remainder is safe in the journal
  kShiftHalf,      // a part of the remainder has moved
  kShiftWritten,   // all of it has moved, the file is not yet cut
  kShiftCut,       // cut, the journal still there
  kMovedAside,     // the exchange file has another name, nothing in it is accounted for
  kAccountedFor,   // a file that was moved aside has the name that says how far it was read
  kRemoved,        // everything that was read, everywhere
  kCommitted,
  kCopyGone,
};
inline constexpr int kRunStepCount = static_cast<int>(RunStep::kCopyGone) + 1;

/// How patient a run is, and who watches it. The defaults are the program's; tests bring others.
struct RunOptions {
  /// How long to wait for the moment in which nobody else has the exchange file open.
  std::chrono::milliseconds patience{2000};
  /// How long a file that was moved aside stays at least: a program that was just opening it under its old
  /// name has opened it by then.
  std::chrono::milliseconds grace{2000};
  /// How long an exchange file that ends inside a record must not have changed to be called damaged.
  std::chrono::milliseconds quiet{10'000};
  /// The user knows that the clock shows an earlier day than the newest exposure.
  bool despiteClock = false;
  std::function<void(RunStep)> onStep = {};
  /// Called every few milliseconds while the run waits for another program.
  std::function<void()> onWait = {};

  void Reached(RunStep step) const {
    if (onStep) onStep(step);
  }
  /// A moment of waiting.
  void Wait() const {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (onWait) onWait();
  }
};

}  // namespace varnlog::intake
