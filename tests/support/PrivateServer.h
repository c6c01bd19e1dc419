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
#include <vector>
#ifndef _WIN32  // where logs lie in files only
#include <sys/wait.h>
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
  PrivateServer() {
    MakeFolder();
    Run(Program("initdb") + " -D " + Data() + " -E UTF8 --locale=C.UTF-8 -U postgres -A trust --no-sync > " +
        folder_ + ".log");
    Start();
  }
  /// One that follows `followed` and is read only until Promote().
  explicit PrivateServer(const PrivateServer& followed) {
    MakeFolder();
    Copy(followed);
  }
  ~PrivateServer() {
    Reap();
    try {
      if (!started_.empty()) Stop();
    } catch (const std::exception&) {
      // It was killed before.
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    for (const char* ending : {".log", ".out"}) std::filesystem::remove(folder_ + ending, ignored);
  }
  PrivateServer& operator=(const PrivateServer&) = delete;

  [[nodiscard]] const std::string& Folder() const { return folder_; }
  /// At once, as when the power fails.
  void Stop() {
    Reap();
    Run(Program("pg_ctl") + " -D " + Data() + " -m immediate stop > " + folder_ + ".log");
  }
  /// All its processes at once, so that nobody is told anything any more.
  void Kill() {
    for (const pid_t pid : Processes()) kill(pid, SIGKILL);
    for (int attempt = 0; attempt < 200 && !started_.empty(); ++attempt) {
      Reap();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  /// Its processes, first the one on which all others depend.
  [[nodiscard]] std::vector<pid_t> Processes() const {
    std::vector<pid_t> all;
    pid_t pid = 0;
    if (!(std::ifstream(Data() + "/postmaster.pid") >> pid)) return all;
    all.push_back(pid);
    const std::string first = std::to_string(pid);
    for (std::ifstream list("/proc/" + first + "/task/" + first + "/children"); list >> pid;)
      all.push_back(pid);
    return all;
  }
  /// Also after Kill(), when some of its processes may still be ending. `options` as postgres takes them.
  void Start(const std::string& options = {}) {
    const std::string command = "cd " + folder_ + " && exec " + as_ + "setpriv --pdeathsig=QUIT " +
                                Program("postgres") + " -D " + Data() + " -k " + folder_ + " -p " + port_ +
                                " -c fsync=off -c autovacuum=off -c listen_addresses= " + options + " >> " +
                                folder_ + ".log 2>&1 < /dev/null";
    for (int attempt = 0; attempt < 600; ++attempt) {
      Reap();
      if (attempt % 20 == 0) {
        started_.push_back(fork());
        if (started_.back() == 0) {
          execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
          _exit(1);
        }
      }
      if (std::system((Program("pg_isready") + " -q -h " + folder_ + " -p " + port_).c_str()) == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    throw std::runtime_error("no server can be started: " + folder_ + ".log");
  }
  /// Lets this account in with its password only.
  void Asks(const std::string& account, const std::string& password) const {
    const std::string rules = ReadFile(Data() + "/pg_hba.conf");
    std::ofstream(Data() + "/pg_hba.conf") << "local all " << account << " scram-sha-256\n" << rules;
    Sql("DROP ROLE IF EXISTS " + account + "; CREATE ROLE " + account + " LOGIN PASSWORD '" + password +
        "'; SELECT pg_reload_conf()");
  }
  /// Starts it anew, to be reached at Port() of this machine too, with a certificate for `name` from an
  /// authority of its own, whose own one is ca.crt in Folder().
  void StartWithCertificate(const std::string& name) {
    Stop();
    const std::string make = "openssl req -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -batch ";
    Run("sh -c '" + make + "-x509 -days 2 -keyout ca.key -out ca.crt -subj /CN=Authority 2> /dev/null && " +
        make + "-keyout server.key -out server.csr -subj /CN=" + name + " 2> /dev/null && " +
        "openssl x509 -req -days 2 -in server.csr -CA ca.crt -CAkey ca.key -CAcreateserial -out server.crt "
        "2> /dev/null && chmod 600 server.key'");
    port_ = std::to_string(20000 + getpid() % 20000);
    Start("-c listen_addresses=localhost -c ssl=on -c ssl_cert_file=" + folder_ +
          "/server.crt -c ssl_key_file=" + folder_ + "/server.key");
  }
  [[nodiscard]] const std::string& Port() const { return port_; }
  /// Throws away what a killed server has and follows that one. It runs once more before, or what it had in
  /// shared memory would be left there.
  void Follow(const PrivateServer& followed) {
    Start();
    Stop();
    std::filesystem::remove_all(Data());
    Copy(followed);
  }
  /// Makes one that follows another one independent.
  void Promote() const { Run(Program("pg_ctl") + " -D " + Data() + " -w promote > " + folder_ + ".log"); }

  /// Runs statements as the server's owner.
  void Sql(const std::string& statements) const {
    const std::string file = folder_ + "/statements.sql";
    std::ofstream(file) << "SET client_min_messages = warning; " << statements;
    Run(Program("psql") + " -q -v ON_ERROR_STOP=1 -h " + folder_ + " -U postgres -d postgres -f " + file +
        " > " + folder_ + ".out");
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
  // One that was killed is taken for running until it was waited for.
  void Reap() {
    std::erase_if(started_, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
  }
  void Copy(const PrivateServer& followed) {
    Run(Program("pg_basebackup") + " -h " + followed.folder_ + " -U postgres -D " + Data() +
        " -R -X stream -c fast --no-sync");
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
  std::string port_ = "5432";
  std::vector<pid_t> started_;
  int logs_ = 0;
};

/// Before any test: a child that a test makes must not be the one that starts it.
inline const bool kServerStarted = LogsAreOnServer() && (PrivateServer::Instance(), true);

#endif

}  // namespace varnlog::test
