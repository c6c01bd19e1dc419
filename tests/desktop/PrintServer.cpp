#include "tests/desktop/PrintServer.h"

#include <stdexcept>

#include <QStandardPaths>

#include "tests/cli/Installation.h"
#include "tests/desktop/Desktop.h"

namespace varnlog::desktop {

namespace fs = std::filesystem;

namespace {

const QStringList kPlaces = {"/usr/sbin", "/sbin"};

QString Program(const char* name) {
  return QStandardPaths::findExecutable(name, kPlaces);
}

constexpr const char* kRights = R"(
Browsing No
DefaultAuthType None
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
)";

/// What sends a job to its printer: here to the file that the printer's address names. It comes into being
/// whole.
constexpr const char* kBackend = R"(#!/bin/sh
[ $# -gt 0 ] || exit 0
file=${DEVICE_URI#keep:}
cat ${6:+"$6"} >"$file.part" && mv "$file.part" "$file"
)";

}  // namespace

bool PrintServer::CanRun() {
  return !Program("cupsd").isEmpty() && !Program("lpadmin").isEmpty();
}

PrintServer::PrintServer(fs::path folder) : folder_(std::move(folder)) {
  // Its own files are found by settings that end at a blank.
  std::string files = "ServerBin " + (folder_ / "bin").string() + "\nDataDir /usr/share/cups\n";
  for (const char* name : {"ServerRoot", "CacheDir", "StateDir", "RequestRoot"}) {
    fs::create_directories(folder_ / name);
    files += std::string(name) + " " + (folder_ / name).string() + "\n";
  }
  for (const char* name : {"AccessLog", "ErrorLog", "PageLog"}) {
    files += std::string(name) + " " + (folder_ / name).string() + "\n";
  }
  // A server that root runs prints as somebody else.
  fs::create_directory(folder_ / "printed");
  fs::permissions(folder_ / "printed", fs::perms::all);
  fs::create_directories(folder_ / "bin" / "backend");
  fs::create_directories(folder_ / "bin" / "daemon");
  fs::create_symlink("/usr/lib/cups/daemon/cups-exec", folder_ / "bin" / "daemon" / "cups-exec");
  cli::Installation::Write(folder_ / "bin" / "backend" / "keep", kBackend);
  fs::permissions(folder_ / "bin" / "backend" / "keep", fs::perms::owner_all | fs::perms::others_exec |
                                                            fs::perms::others_read | fs::perms::group_exec |
                                                            fs::perms::group_read);
  cli::Installation::Write(folder_ / "cups-files.conf", files);
  cli::Installation::Write(folder_ / "cupsd.conf", "Listen " + Address() + kRights);
  server_.start(Program("cupsd"), {"-f", "-c", QString::fromStdString((folder_ / "cupsd.conf").string()),
                                   "-s", QString::fromStdString((folder_ / "cups-files.conf").string())});
  if (!server_.waitForStarted() ||
      !Desktop::WaitFor([this] { return fs::exists(Address()) || server_.waitForFinished(0); }) ||
      server_.state() != QProcess::Running) {
    throw std::runtime_error("the printing system does not start: " +
                             server_.readAllStandardError().toStdString());
  }
}

PrintServer::~PrintServer() {
  server_.terminate();
  if (!server_.waitForFinished()) server_.kill();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

fs::path PrintServer::Printed(const char* name) const {
  return folder_ / "printed" / (std::string(name) + ".pdf");
}

void PrintServer::AddsPrinter(const char* name) {
  QProcess admin;
  admin.start(Program("lpadmin"), {"-h", QString::fromStdString(Address()), "-p", name, "-E", "-v",
                                   "keep:" + QString::fromStdString(Printed(name).string()), "-m", "raw"});
  if (!admin.waitForFinished() || admin.exitCode() != 0) {
    throw std::runtime_error("lpadmin: " + admin.readAllStandardError().toStdString());
  }
}

}  // namespace varnlog::desktop
