#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
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
  static void Damage(const std::string& /*link*/, const std::string& /*sql*/) {}
  static void ForgoRules(const std::string& /*link*/) {}
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
  /// The one that logs are made on.
  static PrivateServer& Instance() {
    static PrivateServer server;
    return server;
  }
  /// Another one, which follows `followed` and is read only until Promote().
  explicit PrivateServer(const PrivateServer& followed) {
    MakeFolder();
    Run(Program("pg_basebackup") + " -h " + followed.folder_ + " -U postgres -D " + Data() +
        " -R -X stream -c fast --no-sync");
    Start();
  }
  ~PrivateServer() {
    Stop();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    std::filesystem::remove(folder_ + ".log", ignored);
  }
  PrivateServer& operator=(const PrivateServer&) = delete;

  [[nodiscard]] const std::string& Folder() const { return folder_; }
  /// At once, as when the power fails.
  void Stop() const { Run(Program("pg_ctl") + " -D " + Data() + " -m immediate stop > " + folder_ + ".log"); }
  /// Of its processes the first one, on which all others depend.
  void Kill() const {
    int pid = 0;
    if (std::ifstream(Data() + "/postmaster.pid") >> pid) kill(pid, SIGKILL);
  }
  /// Also after Kill(), when some of its processes may still be ending. `options` as postgres takes them.
  void Start(const std::string& options = {}) const {
    const std::string command = "cd " + folder_ + " && exec " + as_ + "setpriv --pdeathsig=QUIT " +
                                Program("postgres") + " -D " + Data() + " -k " + folder_ +
                                " -c fsync=off -c autovacuum=off -c listen_addresses= " + options + " >> " +
                                folder_ + ".log 2>&1 < /dev/null";
    for (int attempt = 0; attempt < 600; ++attempt) {
      if (attempt % 20 == 0 && fork() == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(1);
      }
      if (std::system((Program("pg_isready") + " -q -h " + folder_).c_str()) == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    throw std::runtime_error("no server can be started: " + folder_ + ".log");
  }
  /// Makes one that follows another one independent.
  void Promote() const { Run(Program("pg_ctl") + " -D " + Data() + " -w promote > " + folder_ + ".log"); }

  /// Runs statements as the server's owner.
  void Sql(const std::string& statements) const {
    const std::string file = folder_ + "/statements.sql";
    std::ofstream(file) << "SET client_min_messages = warning; " << statements;
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
                         ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / "server.sql"),
                         std::getenv("VARNLOG_TEST_PARTITION") != nullptr);
  }
  /// Runs statements in the SQL of files on the log behind the link, as its owner and with the rules off;
  /// those who have it open hear of a change.
  static void Damage(const std::string& link, const std::string& sql) {
    static const std::regex names(
        R"((^|[^'\w])(TXray|TConfig|THistory|TSeal|t(Xray|Cfg|Hist|Seal)[A-Z]\w*)\b)");
    std::string script = std::regex_replace(sql, names, "$1\"$2\"");
    for (const auto& [here, there] :
         {std::pair(R"(\browid\b)", "\"tXrayCulIntIDPk\""), {R"(\bchar\()", "chr("}})
      script = std::regex_replace(script, std::regex(here), there);
    for (const auto& [table, number] : {std::pair("TXray", "tXrayCulIntIDPk"), {"THistory", "tHistCulNrPk"}})
      script += "; UPDATE varnlog_state SET value = greatest(value, (SELECT max(\"" + std::string(number) +
                "\") FROM \"" + table + "\")) WHERE name = '" + table + "'";
    dao::DeclareOnServer(
        link, "SET LOCAL search_path TO {schema}; SET LOCAL session_replication_role = replica; " + script +
                  "; UPDATE varnlog_state SET value = value + 1 WHERE name = 'changes'; "
                  "SELECT pg_notify('varnlog ' || {schema:text}, value::text) FROM "
                  "varnlog_state WHERE name = 'changes'");
  }
  /// Takes the rules away, for tests of what stands below them.
  static void ForgoRules(const std::string& link) {
    dao::DeclareOnServer(link,
                         "SET LOCAL search_path TO {schema}; ALTER TABLE \"TXray\" DISABLE TRIGGER USER; "
                         "ALTER TABLE \"THistory\" DISABLE TRIGGER USER; "
                         "ALTER TABLE \"TSeal\" DISABLE TRIGGER USER");
  }

 private:
  PrivateServer() {
    MakeFolder();
    Run(Program("initdb") + " -D " + Data() + " -E UTF8 --locale=C.UTF-8 -U postgres -A trust --no-sync > " +
        folder_ + ".log");
    Start();
  }

  // In memory where there is a place for that: nothing there outlives the tests anyway.
  void MakeFolder() {
    std::string pattern = access("/dev/shm", W_OK) == 0 ? "/dev/shm/varnlog-XXXXXX" : "/tmp/varnlog-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for a server");
    folder_ = pattern;
    if (geteuid() != 0) return;
    as_ = "setpriv --reuid=postgres --regid=postgres --init-groups ";
    Shell("chown postgres " + folder_);
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
