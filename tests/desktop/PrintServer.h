#pragma once

#include <filesystem>
#include <string>

#include <QProcess>

namespace varnlog::desktop {

/// A printing system of the test's own, whose printers write what they are given into files. The machine's is
/// neither seen nor changed.
class PrintServer {
 public:
  /// False where the printing system is not installed.
  [[nodiscard]] static bool CanRun();

  explicit PrintServer(std::filesystem::path folder);
  ~PrintServer();
  PrintServer(const PrintServer&) = delete;
  PrintServer& operator=(const PrintServer&) = delete;

  /// The value of CUPS_SERVER with which programs find it.
  [[nodiscard]] std::string Address() const { return (folder_ / "socket").string(); }
  void AddsPrinter(const char* name);
  /// The file that the last job of a printer was written to.
  [[nodiscard]] std::filesystem::path Printed(const char* name) const;

 private:
  std::filesystem::path folder_;
  QProcess server_;
};

}  // namespace varnlog::desktop
