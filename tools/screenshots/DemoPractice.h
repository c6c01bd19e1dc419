#pragma once

#include <filesystem>
#include <string>

namespace varnlog::tools {

/// A made-up practice to show the program in: an imaging suite whose exchange file holds exposures, with the
/// program folder inside. The folder goes with the object.
class DemoPractice {
 public:
  /// What a build leaves behind.
  struct Parts {
    std::filesystem::path programFolder;  // with its databases
    std::filesystem::path suite;          // with the data-path library
    std::filesystem::path oldLog;         // a log of the earlier program
  };

  /// Throws std::filesystem::filesystem_error when the folder exists or cannot be made.
  DemoPractice(std::filesystem::path folder, const Parts& parts, const std::string& language);
  ~DemoPractice();
  DemoPractice(const DemoPractice&) = delete;
  DemoPractice& operator=(const DemoPractice&) = delete;

  [[nodiscard]] std::filesystem::path program() const { return folder_ / "program"; }
  [[nodiscard]] std::filesystem::path data() const { return folder_ / "Data"; }
  [[nodiscard]] std::filesystem::path oldLog() const { return data() / "Varnlog-2003.mdb"; }

 private:
  void Report(const std::string& language) const;

  std::filesystem::path folder_;
};

}  // namespace varnlog::tools
