#pragma once

#include <gtest/gtest.h>

#include "start/Language.h"
#include "tests/cli/Installation.h"
#include "tests/desktop/Desktop.h"

namespace varnlog::desktop {

/// The real program on a display of its own, on the demo's installation and one patient more, whose voltage
/// is left to be entered.
class RealProgram : public testing::Test {
 protected:
  explicit RealProgram(int exposures = 60);

  [[nodiscard]] QString Text(core::TextKey key) const;
  /// What a field of the added patient holds in the log, as anybody else reads it.
  [[nodiscard]] QString Stored(const char* field) const;

  /// Waits for a message and presses the button.
  void Answers(core::TextKey question, core::TextKey button);
  /// Starts and takes in what the suite has reported.
  void StartsAndUpdates();
  /// The added patient's exposure stands first once the rows are sorted by patient.
  void SortsByPatient();
  /// Clicks the cell, types over what it holds and confirms.
  void Enters(const Wanted& cell, const char* text);
  void Quits();

  cli::Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  core::Globals globals_;
  start::Language texts_{globals_};
  Desktop desktop_{installation_.program().string()};
};

}  // namespace varnlog::desktop
