#include "tests/cli/Installation.h"

#include "platform/Clock.h"
#include "platform/CodePage.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "tests/Paths.h"
#include "tests/cli/CommandLine.h"
#include "tests/support/LogFolder.h"

namespace varnlog::cli {

namespace {

namespace fs = std::filesystem;

std::string Quoted(const fs::path& path) {
  return "'" + path.string() + "'";
}

}  // namespace

Installation::Installation(const std::string& name)
    : suite_(folder_ / name / platform::ToPath("Kälvero Süite")) {
  fs::create_directories(suite_ / "Data");
  fs::create_directories(program());
  for (const char* file : {"verbalo.mdb", "varnlog.md0", "system.mdw"}) {
    fs::copy_file(fs::path(VARNLOG_PROGRAM_DIR) / file, program() / file);
  }
  fs::copy_file(fs::path(VARNLOG_SUITE_DIR) / "KVFILEDB.DLL", suite_ / "KVFILEDB.DLL");
  Write(suite_ / "kalvero.ini", "[INSTALL]\r\nSite=Praxis Dr. Weiß\r\n[Config]\r\nSchemeUS=0\r\n");
  Write(suite_ / "fotavex.ini", "[XRaysIO]\r\nkV=60\r\nmA=7\r\n");
  if (test::LogsAreOnServer()) test::PrivateServer::Instance().MakeLog(log());
}

void Installation::MakeLog() const {
  if (!test::LogsAreOnServer()) fs::copy_file(program() / "varnlog.md0", log());
}

std::string Installation::CtlCommand() const {
  return Quoted(fs::path(VARNLOG_PROGRAM_DIR) / "varnlogctl") + " --folder " + Quoted(program());
}

Ended Installation::Ctl(const std::string& arguments) const {
  return Shell(CtlCommand() + " " + arguments);
}

Ended Installation::Shell(const std::string& command) const {
  const fs::path out = suite_.parent_path() / "out";
  const fs::path err = suite_.parent_path() / "err";
  return {.status = Run(command, out, err), .out = test::ReadFile(out), .err = test::ReadFile(err)};
}

void Installation::Reports(const std::vector<tools::Exposure>& exposures) const {
  const platform::CodePage oem(850);
  std::string records;
  for (const tools::Exposure& exposure : exposures) tools::AppendRecord(exposure, oem, records);
  test::AppendFile(exchangeFile(), records);
}

void Installation::SetLanguage(const std::string& code) const {
  Write(program() / "varnlog.ini", "[App]\r\nLanguage=" + code + "\r\n");
}

void Installation::WithLog(bool exclusive, const std::function<void(dao::Database&)>& use) const {
  dao::DBEngine engine;
  engine.SetSystemDB((program() / "system.mdw").string());
  const auto workspace = engine.CreateWorkspace("Other", "Admin", "");
  const auto database = workspace->OpenDatabase(log().string(), exclusive, false);
  // What is changed on a server has to stand in the history.
  const platform::SystemClock clock;
  if (test::LogsAreOnServer() && !database->IsReadOnly())
    static_cast<void>(seals::OpenLedger(
        *database,
        std::make_shared<seals::Ledger>(
            platform::Author{"berta", "Berta Berg", "Röntgen 2", "varnlog test", "2-2-b"}, clock)));
  use(*database);
  database->Close();
}

void Installation::DamagesLog(const std::string& sql) const {
  WithLog(false, [&sql](dao::Database& log) { test::Damages(log, sql); });
}

void Installation::Write(const fs::path& file, const std::string& content) {
  test::WriteFile(file, content);
}

tools::Exposure NewExposure(const std::string& lastName, const std::string& type, const std::string& takeDate,
                            const std::string& takeTime) {
  tools::Exposure exposure;
  exposure.lastName = lastName;
  exposure.firstName = "Käthe";
  exposure.birthday = "01.02.1960";
  exposure.sex = "F";
  exposure.pregCode = "N";
  exposure.typeCode = type;
  exposure.typeExtra = "48";
  exposure.takeDate = takeDate;
  exposure.takeTime = takeTime;
  exposure.responsible = "Dr. Weiß";
  exposure.radDur = "120";
  exposure.volt = "65";
  exposure.cur = "8";
  exposure.dose = "3.4";
  return exposure;
}

}  // namespace varnlog::cli
