#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/Globals.h"
#include "core/TextLookup.h"
#include "core/UserDialog.h"
#include "tests/Paths.h"

namespace varnlog::start::test {

/// A suite's folder with the program's folder in it, under a name that careless code stumbles over.
class SuiteFolder {
 public:
  SuiteFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "Röntgen Suite XXXXXX").string();
    suite_ = mkdtemp(pattern.data());
    std::filesystem::create_directories(Program());
    std::filesystem::create_directories(suite_ / "Daten");
  }
  ~SuiteFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(suite_, ignored);
  }
  SuiteFolder(const SuiteFolder&) = delete;
  SuiteFolder& operator=(const SuiteFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Suite() const { return suite_; }
  [[nodiscard]] std::filesystem::path Program() const { return suite_ / "Röntgen Buch"; }
  [[nodiscard]] std::string Data(const std::string& name) const { return (suite_ / "Daten" / name).string(); }

  /// The program's databases, as they are delivered.
  void InstallProgram() const {
    for (const char* file : {"verbalo.mdb", "varnlog.md0", "system.mdw"}) {
      std::filesystem::copy_file(std::filesystem::path(VARNLOG_PROGRAM_DIR) / file, Program() / file);
    }
  }

  [[nodiscard]] core::Globals NewGlobals() const {
    core::Globals globals;
    globals.ProgramFolderGl = Program().string();
    globals.IniFileGl = (Program() / "varnlog.ini").string();
    globals.DataPathGl = Data("");
    return globals;
  }

 private:
  std::filesystem::path suite_;
};

inline void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string FileContent(const std::filesystem::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

class Listener final : public core::UserDialog {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    messages.push_back(message);
    return core::MessageAnswer::kOk;
  }
  void Beep() override {}

  /// The messages since the last call, each cut behind its key, with a '!' for the critical icon and an 'i'
  /// for the information icon.
  std::string TakeKeys() {
    std::string keys;
    for (const core::Message& message : messages) {
      keys += message.text.substr(0, message.text.find(' '));
      if (message.icon == core::MessageIcon::kCritical) keys += "!";
      if (message.icon == core::MessageIcon::kInformation) keys += "i";
    }
    messages.clear();
    return keys;
  }

  std::vector<core::Message> messages;
};

}  // namespace varnlog::start::test
