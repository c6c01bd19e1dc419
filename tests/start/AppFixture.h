#pragma once

#include <filesystem>
#include <string>

#include "core/Globals.h"
#include "tests/Paths.h"
#include "tests/support/FakeUser.h"
#include "tests/support/TestFolder.h"

namespace varnlog::start::test {

using varnlog::test::ReadFile;
using varnlog::test::WriteFile;

/// A suite's folder with the program's folder in it.
class SuiteFolder {
 public:
  SuiteFolder() {
    std::filesystem::create_directories(Program());
    std::filesystem::create_directories(Suite() / "Daten");
  }

  [[nodiscard]] const std::filesystem::path& Suite() const { return suite_.Path(); }
  [[nodiscard]] std::filesystem::path Program() const { return suite_ / "Röntgen Buch"; }
  [[nodiscard]] std::string Data(const std::string& name) const {
    return (suite_ / "Daten" / platform::ToPath(name)).string();
  }

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
  varnlog::test::TestFolder suite_;
};

class Listener final : public varnlog::test::FakeUser {
 public:
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
};

}  // namespace varnlog::start::test
