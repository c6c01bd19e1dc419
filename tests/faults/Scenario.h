#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace varnlog::faults {

class Scene;

/// What a command owes its user when it ends with status 0, whatever went wrong meanwhile.
enum class Promise {
  kTaken,      // every exposure reported is in the log
  kKept,       // the log holds what it held
  kShown,      // the output is that of an undisturbed run, and no file was touched
  kCorrected,  // every correction is in the log, and so is each that was acknowledged before
  kConverted,  // the new log holds the rows of the old one
};

/// The file that a workstation looks for after each correction, so that the record of a run tells which ones
/// its user saw stored.
constexpr const char* kAcknowledged = "acknowledged";
constexpr int kCorrections = 4;

/// A command of varnlogctl, or what only a workstation does (workstation/main.cpp), and what it begins with.
/// Everything happens in the suite's data folder.
struct Scenario {
  std::string name;
  std::string arguments;
  Promise promise = Promise::kTaken;
  std::function<void(Scene&)> prepare;
  bool arrives = false;  // the suite reports more when the run has begun to write
  bool held = false;     // the suite keeps the exchange file open
};

/// For the messages of tests.
std::ostream& operator<<(std::ostream& stream, const Scenario& scenario);

[[nodiscard]] const std::vector<Scenario>& AllScenarios();
/// Without those that only show something.
[[nodiscard]] std::vector<Scenario> ChangingScenarios();
[[nodiscard]] const Scenario& ScenarioNamed(const std::string& name);

}  // namespace varnlog::faults
