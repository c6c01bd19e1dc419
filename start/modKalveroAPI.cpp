#include <array>
#include <filesystem>

#include "core/Installation.h"
#include "db/modCommon.h"
#include "platform/CodePage.h"
#include "platform/Files.h"
#include "platform/SharedLibrary.h"
#include "start/StartUp.h"

namespace varnlog::start {

namespace fs = std::filesystem;

namespace {

// The library's own interface: results other than 0 are failures.
using OpenFunction = int();
using InfoFunction = int(char* buffer, int size, int, int, int);
using CloseFunction = int();

constexpr int kBufferSize = 261;
constexpr int kBytesOffered = 259;

/// Makes the suite's folder the current one, where the library looks for the files it needs.
class CurrentFolder {
 public:
  explicit CurrentFolder(const fs::path& folder) : old_(fs::current_path()) { fs::current_path(folder); }
  ~CurrentFolder() {
    std::error_code ignored;
    fs::current_path(old_, ignored);
  }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

 private:
  fs::path old_;
};

/// The bytes that the library gives, or "".
std::string AskLibrary(const fs::path& file) {
  const platform::SharedLibrary library(file);
  if (library.IsForOtherWidth())
    return platform::AskForOtherWidth(file, file.parent_path()).value_or(std::string());
  auto* open = library.Symbol<OpenFunction>("FDB_Open");
  auto* info = library.Symbol<InfoFunction>("FDB_GetDataBaseInfo");
  auto* close = library.Symbol<CloseFunction>("FDB_Close");
  if (open == nullptr || info == nullptr || close == nullptr) return {};
  std::array<char, kBufferSize> buffer{};
  const bool answered = open() == 0 && info(buffer.data(), kBytesOffered, 0, 0, 0) == 0;
  close();
  buffer.back() = '\0';
  return answered ? std::string(buffer.data()) : std::string();
}

fs::path HostLibrary(std::string_view programFolder) {
  return fs::canonical(platform::ToPath(programFolder) / "..") / core::kSuiteLibrary;
}

}  // namespace

std::string UntrustedHostLibrary(std::string_view programFolder) {
  try {
    const fs::path named = HostLibrary(programFolder);
    if (!fs::exists(named)) return {};
    const fs::path file = fs::canonical(named);
    // Who can exchange it decides what runs here, with the rights of whoever starts this program.
    for (const fs::path& each : {file, file.parent_path(), named.parent_path()}) {
      if (platform::MayBeChangedByOthers(each)) return platform::FromPath(each);
    }
  } catch (const fs::filesystem_error&) {
    return {};
  }
  return {};
}

std::string HostDataPath(std::string_view programFolder, std::string_view language) {
  try {
    const fs::path file = HostLibrary(programFolder);
    if (!fs::exists(file) || !UntrustedHostLibrary(programFolder).empty()) return {};
    const CurrentFolder inSuite(file.parent_path());
    const std::string bytes = AskLibrary(file);
    if (bytes.empty()) return {};
    std::string path = platform::DecodeTextFile(bytes, platform::CodePage::Ansi(language));
    if (path.back() != '\\' && path.back() != '/') path += static_cast<char>(fs::path::preferred_separator);
    return path;
  } catch (const std::exception&) {
    return {};
  }
}

bool FindHostData(core::Globals& globals, const Services& services) {
  using namespace core::literals;
  core::SetDataFolder(globals, HostDataPath(globals.ProgramFolderGl, globals.LanguageGl));
  if (!globals.DataPathGl.empty()) return true;
  const std::string untrusted = UntrustedHostLibrary(globals.ProgramFolderGl);
  if (untrusted.empty()) {
    services.Messages().Critical("MN_ERR_DBNOTFOUND"_key);
  } else {
    services.Messages().Critical("MN_ERR_UNTRUSTED"_key, {{"strFile", untrusted}});
  }
  return false;
}

}  // namespace varnlog::start
