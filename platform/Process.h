#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
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

/// Lets `program` go on in this process's place, called with `arguments`, its own name first: with the same
/// folder, environment and standard streams, and what it ends with is what this process ends with. Nothing is
/// tidied up here. Comes back only when it could not be started: why.
[[nodiscard]] std::error_code GoOnAs(const std::filesystem::path& program,
                                     const std::vector<std::string>& arguments);

/// The file of a program of this name: with the ending that programs have there.
[[nodiscard]] std::string ProgramFile(std::string_view name);

/// True where the operating system has a registration program for components ("Regsvr32.exe").
[[nodiscard]] bool HasComponentRegistration();

/// What main() was given as UTF-8, the program's own name first.
[[nodiscard]] std::vector<std::string> ProgramArguments(int count, char** arguments);

/// The value of a variable of the environment; "" when it is not set.
[[nodiscard]] std::string EnvironmentVariable(const char* name);

}  // namespace varnlog::platform
