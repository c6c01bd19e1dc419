#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "tests/support/TestFolder.h"
#include "tools/exchange/ExchangeRecord.h"

namespace varnlog::cli {

/// How a command line ended.
struct Ended {
  int status = -1;
  std::string out;
  std::string err;
};

/// A scratch imaging suite with a program folder inside, in a path with blanks and umlauts. Gone with the
/// object.
class Installation {
 public:
  explicit Installation(const std::string& name);

  [[nodiscard]] const std::filesystem::path& suite() const { return suite_; }
  [[nodiscard]] std::filesystem::path program() const { return suite_ / "program"; }
  [[nodiscard]] std::filesystem::path log() const { return suite_ / "Data" / "Varnlog.mdb"; }
  [[nodiscard]] std::filesystem::path exchangeFile() const { return suite_ / "Data" / "varnlog.sdx"; }

  /// varnlogctl on this installation; `arguments` as a shell takes them.
  [[nodiscard]] Ended Ctl(const std::string& arguments) const;
  /// Any command line, without a terminal; Windows knows but one program with its arguments.
  [[nodiscard]] Ended Shell(const std::string& command) const;
  /// How Shell() names varnlogctl with this installation's folder.
  [[nodiscard]] std::string CtlCommand() const;

  /// An empty log, which an update would make otherwise; on a server one stands there from the beginning.
  void MakeLog() const;
  void Reports(const std::vector<tools::Exposure>& exposures) const;
  void SetLanguage(const std::string& code) const;
  /// Opens the log as another workstation would.
  void WithLog(bool exclusive, const std::function<void(dao::Database&)>& use) const;
  /// As test::Damages() does.
  void DamagesLog(const std::string& sql) const;
  static void Write(const std::filesystem::path& file, const std::string& content);

 private:
  test::TestFolder folder_;
  std::filesystem::path suite_;
};

/// A complete new exposure; the tests change what they are about.
[[nodiscard]] tools::Exposure NewExposure(const std::string& lastName, const std::string& type,
                                          const std::string& takeDate, const std::string& takeTime);

}  // namespace varnlog::cli
