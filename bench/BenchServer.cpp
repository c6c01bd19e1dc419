#include "bench/BenchServer.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <libpq-fe.h>
#include <map>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace varnlog::bench {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kTakenIn = 1'000'000;

void Shell(const std::string& command) {
  if (std::system((command + " < /dev/null").c_str()) != 0) throw std::runtime_error("failed: " + command);
}

std::string ServerProgram(const std::string& name) {
  for (const auto& version : fs::directory_iterator("/usr/lib/postgresql"))
    if (fs::exists(version.path() / "bin" / name)) return (version.path() / "bin" / name).string();
  throw std::runtime_error("there is no " + name);
}

}  // namespace

BareServer::BareServer(const std::string& folder)
    : connection_(PQconnectdb(("host=" + folder + " user=postgres dbname=postgres").c_str())) {
  PQsetNoticeProcessor(
      connection_, [](void*, const char*) {}, nullptr);
  if (PQstatus(connection_) == CONNECTION_OK) return;
  const std::string message = PQerrorMessage(connection_);
  PQfinish(connection_);
  throw std::runtime_error(message);
}

BareServer::~BareServer() {
  PQfinish(connection_);
}

int BareServer::Read(pg_result* result) const {
  const std::unique_ptr<PGresult, decltype(&PQclear)> owned(result, PQclear);
  const ExecStatusType status = PQresultStatus(result);
  if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK && status != PGRES_COPY_OUT)
    throw std::runtime_error(PQerrorMessage(connection_));
  volatile char seen = 0;
  for (int row = 0; row < PQntuples(result); ++row)
    for (int column = 0; column < PQnfields(result); ++column) seen = *PQgetvalue(result, row, column);
  static_cast<void>(seen);
  return PQntuples(result);
}

std::string BareServer::Run(const std::string& sql) const {
  const std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(connection_, sql.c_str()), PQclear);
  const ExecStatusType status = PQresultStatus(result.get());
  if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK)
    throw std::runtime_error(PQerrorMessage(connection_));
  return PQntuples(result.get()) > 0 ? PQgetvalue(result.get(), 0, 0) : "";
}

void BareServer::Prepare(const char* name, const std::string& sql) const {
  Read(PQprepare(connection_, name, sql.c_str(), 0, nullptr));
}

int BareServer::RunPrepared(const char* name, const std::vector<std::string>& values) const {
  std::vector<const char*> texts;
  for (const std::string& value : values) texts.push_back(value.c_str());
  return Read(
      PQexecPrepared(connection_, name, static_cast<int>(texts.size()), texts.data(), nullptr, nullptr, 0));
}

std::int64_t BareServer::CopyOut(const std::string& sql) const {
  Read(PQexec(connection_, sql.c_str()));
  std::int64_t lines = 0;
  char* line = nullptr;
  while (PQgetCopyData(connection_, &line, 0) > 0) {
    PQfreemem(line);
    ++lines;
  }
  Read(PQgetResult(connection_));
  PQclear(PQgetResult(connection_));
  return lines;
}

BenchServer& BenchServer::Instance() {
  static BenchServer server;
  return server;
}

BenchServer::BenchServer() {
  std::string pattern = (fs::temp_directory_path() / "varnlog-server-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for a server");
  folder_ = pattern;
  if (geteuid() == 0) {
    as_ = "setpriv --reuid=postgres --regid=postgres --init-groups ";
    Shell("chown postgres " + folder_);
  }
  const std::string data = folder_ + "/data";
  Shell("cd " + folder_ + " && " + as_ + ServerProgram("initdb") + " -D " + data +
        " -E UTF8 --locale=C.UTF-8 -U postgres -A trust > " + folder_ + ".log");
  const std::string command = "cd " + folder_ + " && exec " + as_ + "setpriv --pdeathsig=INT " +
                              ServerProgram("postgres") + " -D " + data + " -k " + folder_ +
                              " -c listen_addresses= > " + folder_ + ".log 2>&1 < /dev/null";
  if (fork() == 0) {
    execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    _exit(1);
  }
  for (int attempt = 0; attempt < 600; ++attempt) {
    if (std::system((ServerProgram("pg_isready") + " -q -h " + folder_).c_str()) == 0) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  throw std::runtime_error("no server can be started: " + folder_ + ".log");
}

BenchServer::~BenchServer() {
  static_cast<void>(std::system(("cd " + folder_ + " && " + as_ + ServerProgram("pg_ctl") + " -D " + folder_ +
                                 "/data -m immediate -s stop < /dev/null")
                                    .c_str()));
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  fs::remove(folder_ + ".log", ignored);
}

void BenchServer::MakeLog(const Installation& practice, const std::string& schema) {
  BareServer(folder_).Run("DROP SCHEMA IF EXISTS " + schema + " CASCADE");
  std::ofstream(practice.LogFile()) << "[VarnlogServer]\nHost=" << folder_
                                    << "\nDatabase=postgres\nUser=postgres\nSchema=" << schema << "\n";
  if (practice.Ctl({"server", "init", practice.LogFile().string()}).status != 0)
    throw std::runtime_error("varnlogctl server init failed");
}

const Installation& BenchServer::Filled(std::int64_t rows) {
  static std::map<std::int64_t, std::unique_ptr<Installation>> practices;
  auto& practice = practices[rows];
  if (practice) return *practice;
  practice = std::make_unique<Installation>("server-" + std::to_string(rows));
  MakeLog(*practice, Schema(rows));
  if (rows > kTakenIn) {
    Multiply(rows);
  } else {
    CopyInto(RecordFile(rows, 7, 2010), practice->ExchangeFile());
    if (practice->Ctl({"update"}).status != 0) throw std::runtime_error("varnlogctl update failed");
  }
  // As the server does by itself some time after so many rows have come.
  BareServer(folder_).Run("VACUUM ANALYZE " + Schema(rows) + ".\"TXray\"");
  return *practice;
}

void BenchServer::Multiply(std::int64_t rows) {
  static_cast<void>(Filled(kTakenIn));
  const BareServer bare(folder_);
  std::string fields =
      bare.Run("SELECT string_agg(CASE attname WHEN 'tXrayCulIntIDPk' THEN '\"tXrayCulIntIDPk\" + copy * " +
               std::to_string(kTakenIn) +
               "' WHEN 'tXrayTs' THEN 'to_char(\"tXrayTs\"::timestamp + copy * interval ''20 years'', "
               "''YYYY-MM-DD HH24:MI:SS'')' ELSE quote_ident(attname) END, ', ' ORDER BY attnum) "
               "FROM pg_attribute WHERE attrelid = '" +
               Schema(kTakenIn) + ".\"TXray\"'::regclass AND attnum > 0");
  bare.Run("INSERT INTO " + Schema(rows) + ".\"TXray\" SELECT " + fields + " FROM " + Schema(kTakenIn) +
           ".\"TXray\", generate_series(0, " + std::to_string(rows / kTakenIn - 1) +
           ") AS copy ORDER BY copy, \"tXrayCulIntIDPk\"");
}

}  // namespace varnlog::bench
