#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "app/frmMDIMain.h"
#include "bench/Installation.h"
#include "platform/Clock.h"
#include "start/Language.h"
#include "start/modINIFile.h"
#include "ui/MessageBox.h"

namespace varnlog::bench {

/// The desktop program in this process, on the log of an installation. Every question is answered with Yes.
class Program {
 public:
  /// Runs the load sequence, up to but without the first painting of the rows.
  explicit Program(const std::filesystem::path& programFolder);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  [[nodiscard]] ui::TDBGrid& Grid() { return window_->Results()->Grid(); }
  /// Lets the program run until rows stand in the grid on the screen.
  void UntilPainted();
  /// Lets the program run until every row is counted.
  void UntilPopulated();

 private:
  core::Globals globals_;
  start::Language texts_{globals_};
  ui::MessageBox user_{texts_};
  start::modINIFile ini_;
  platform::SystemClock clock_;
  platform::ShortDate shortDate_;
  start::HostToothScheme scheme_{globals_, ini_};
  std::unique_ptr<app::frmMDIMain> window_;
};

/// Goes to the row and paints the screenful around it.
void JumpTo(ui::TDBGrid& grid, int row);

/// Asks the grid for its children and each of them for what a screen reader reads; the number of children.
int ReadChildren(ui::TDBGrid& grid);

/// To be called while the application still exists: lets go of the windows that benchmarks keep.
void CloseViews();

inline constexpr const char* kWalkOption = "--walk";
/// What a process of its own is started for: shows the log of a program folder, visits rows all over it, and
/// with `how` "children" reads what a screen reader is told. The exit status.
[[nodiscard]] int Walk(const std::string& how, const std::string& programFolder);

}  // namespace varnlog::bench
