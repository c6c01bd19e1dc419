#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#ifndef _WIN32  // where logs lie in files only
#include <unistd.h>
#endif

#include "db/dao/ServerLink.h"
#include "tests/Paths.h"
#include "tests/support/TestFolder.h"

namespace varnlog::test {

#ifdef _WIN32

[[nodiscard]] inline bool LogsAreOnServer() {
  return false;
}
class PrivateServer {
 public:
  static PrivateServer& Instance() { throw std::runtime_error("there are no servers here"); }
  void MakeLog(const std::filesystem::path& /*link*/) {}
};

#else

/// Whether the tests of this process have their logs on a server.
[[nodiscard]] inline bool LogsAreOnServer() {
  const char* const storage = std::getenv("VARNLOG_TEST_STORAGE");
  return storage != nullptr && std::string(storage) == "server";
}

/// A database server of this process alone, reached through a socket; it ends with the process. Where none
/// can be started its tests fail.
class PrivateServer {
 public:
  static PrivateServer& Instance() {
    static PrivateServer server;
    return server;
  }
  PrivateServer(const PrivateServer&) = delete;
  PrivateServer& operator=(const PrivateServer&) = delete;

  /// At once, as when the power fails.
  void Stop() { Run(Program("pg_ctl") + " -D " + Data() + " -m immediate stop"); }
  void Start() {
    const std::string command = "cd " + folder_ + " && exec " + as_ + "setpriv --pdeathsig=QUIT " +
                                Program("postgres") + " -D " + Data() + " -k " + folder_ +
                                " -c listen_addresses= -c fsync=off -c autovacuum=off > " + folder_ +
                                ".log 2>&1 < /dev/null";
    if (fork() == 0) {
      execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      _exit(1);
    }
    for (int attempt = 0; attempt < 300; ++attempt) {
      if (std::system((Program("pg_isready") + " -q -h " + folder_).c_str()) == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("no server can be started: " + folder_ + ".log");
  }

  /// Runs statements as the server's owner.
  void Sql(const std::string& statements) const {
    const std::string file = folder_ + "/statements.sql";
    std::ofstream(file) << statements;
    Run(Program("psql") + " -q -v ON_ERROR_STOP=1 -h " + folder_ + " -U postgres -d postgres -f " + file);
  }

  /// The text of a link file to the schema.
  [[nodiscard]] std::string Link(const std::string& schema) const {
    return "[VarnlogServer]\nHost=" + folder_ + "\nDatabase=postgres\nUser=postgres\nSchema=" + schema + "\n";
  }
  /// Makes a link file and the empty log of a new schema behind it.
  void MakeLog(const std::filesystem::path& link) {
    std::ofstream(link) << Link("log" + std::to_string(getpid()) + "_" + std::to_string(++logs_));
    dao::DeclareOnServer(link.string(),
                         ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / "server.sql"));
  }

 private:
  PrivateServer() {
    std::string pattern = "/tmp/varnlog-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for a server");
    folder_ = pattern;
    if (geteuid() == 0) {
      as_ = "setpriv --reuid=postgres --regid=postgres --init-groups ";
      Shell("chown postgres " + folder_);
    }
    Run(Program("initdb") + " -D " + Data() + " -E UTF8 --locale=C.UTF-8 -U postgres -A trust --no-sync > " +
        folder_ + ".log");
    Start();
  }
  ~PrivateServer() {
    Stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    std::filesystem::remove(folder_ + ".log", ignored);
  }

  [[nodiscard]] std::string Data() const { return folder_ + "/data"; }
  [[nodiscard]] static std::string Program(const std::string& name) {
    for (const auto& version : std::filesystem::directory_iterator("/usr/lib/postgresql"))
      if (std::filesystem::exists(version.path() / "bin" / name)) return version.path() / "bin" / name;
    throw std::runtime_error("there is no " + name);
  }
  void Run(const std::string& command) const { Shell("cd " + folder_ + " && " + as_ + command); }
  static void Shell(const std::string& command) {
    if (std::system((command + " < /dev/null").c_str()) != 0) throw std::runtime_error("failed: " + command);
  }

  std::string folder_;
  std::string as_;
  int logs_ = 0;
};

/// Before any test: a child that a test makes must not be the one that starts it.
inline const bool kServerStarted = LogsAreOnServer() && (PrivateServer::Instance(), true);

#endif

}  // namespace varnlog::test
