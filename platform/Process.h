#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::platform {

/// Starts other programs. A test watches what would have been started.
class Launcher {
 public:
  virtual ~Launcher() = default;
  /// Starts `command` (program, arguments) without waiting for it and without a window; false when it could
  /// not be started.
  virtual bool Start(const std::vector<std::string>& command) = 0;
};

class SystemLauncher final : public Launcher {
 public:
  bool Start(const std::vector<std::string>& command) override;
};

/// The file of a program of this name: with the ending that programs have there.
[[nodiscard]] std::string ProgramFile(std::string_view name);

/// True where the operating system has a registration program for components ("Regsvr32.exe").
[[nodiscard]] bool HasComponentRegistration();

/// What main() was given as UTF-8, the program's own name first.
[[nodiscard]] std::vector<std::string> ProgramArguments(int count, char** arguments);

/// The value of a variable of the environment; "" when it is not set.
[[nodiscard]] std::string EnvironmentVariable(const char* name);

}  // namespace varnlog::platform
