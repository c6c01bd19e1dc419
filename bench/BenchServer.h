#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Installation.h"

struct pg_conn;
struct pg_result;

namespace varnlog::bench {

/// A connection that bypasses the program. Throws std::runtime_error with what the server says.
class BareServer {
 public:
  explicit BareServer(const std::string& folder);
  ~BareServer();
  BareServer(const BareServer&) = delete;
  BareServer& operator=(const BareServer&) = delete;

  /// Statements at once; the first value of what the last one gave, "" for none.
  std::string Run(const std::string& sql) const;
  /// Names a statement with parameters.
  void Prepare(const char* name, const std::string& sql) const;
  /// Runs it and reads every value; how many rows there were.
  int RunPrepared(const char* name, const std::vector<std::string>& values) const;
  /// COPY ... TO STDOUT, every line read; how many there were.
  std::int64_t CopyOut(const std::string& sql) const;

 private:
  int Read(pg_result* result) const;

  pg_conn* connection_;
};

/// A database server of this process alone, with the settings it has when nobody changes them: what is
/// committed is on the disk. Reached through a socket in Folder(); it ends with the process.
class BenchServer {
 public:
  static BenchServer& Instance();
  BenchServer(const BenchServer&) = delete;
  BenchServer& operator=(const BenchServer&) = delete;

  [[nodiscard]] const std::string& Folder() const { return folder_; }
  /// The empty log of a schema, and the link to it as the practice's log.
  void MakeLog(const Installation& practice, const std::string& schema);

  /// An installation whose log on the server holds that many exposures, made once: up to a million taken in
  /// from an exchange file, more by copying those to later years.
  [[nodiscard]] const Installation& Filled(std::int64_t rows);
  /// The name of that log's schema.
  [[nodiscard]] static std::string Schema(std::int64_t rows) { return "filled" + std::to_string(rows); }

 private:
  BenchServer();
  ~BenchServer();
  void Multiply(std::int64_t rows);

  std::string folder_;
  std::string as_;  // how a command is run as who may run a server
};

}  // namespace varnlog::bench
