#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "db/dao/CellView.h"
#include "db/dao/postgres/LinkFile.h"

struct pg_conn;
struct pg_result;

namespace varnlog::dao {

/// What a statement gave. Rows and columns count from 0; texts live as long as the object.
class ServerResult {
 public:
  explicit ServerResult(pg_result* result) : result_(result) {}

  [[nodiscard]] int RowCount() const;
  [[nodiscard]] int ColumnCount() const;
  [[nodiscard]] std::string ColumnName(int column) const;
  [[nodiscard]] bool IsNull(int row, int column) const;
  [[nodiscard]] std::string_view Text(int row, int column) const;
  /// 0 for NULL and for what is no number.
  [[nodiscard]] std::int64_t Number(int row, int column) const;
  /// By the type that the server gives the column: whole numbers and yes/no, numbers, texts.
  [[nodiscard]] CellView Cell(int row, int column) const;
  /// Rows that the statement changed.
  [[nodiscard]] std::int64_t Changed() const;

 private:
  struct Clear {
    void operator()(pg_result* result) const;
  };
  std::unique_ptr<pg_result, Clear> result_;
  mutable std::vector<CellKind> kinds_;  // of the columns, once they were asked for
  // Of the cells whose text the server holds in another form.
  mutable std::map<std::pair<int, int>, std::string> texts_;
};

/// A statement's parameters as texts, nothing for NULL. What they point to must live until it was run.
using ServerValues = std::vector<std::optional<std::string_view>>;

/// One connection to a server, and the one place where its client library is called. Every function throws
/// EngineError; kConnectionLost when the server does not answer any more, and from then on IsUp() is false.
class ServerSession {
 public:
  /// Asked now and then while a connection is being made; false gives up (kCancelled).
  using Waiting = std::function<bool()>;

  /// Tries the hosts one after the other, each for a few seconds, and takes the first that can be written to,
  /// else the first that answers. Throws kServerUnreachable, kBadAccount, kServerDatabaseMissing,
  /// kServerNotTrusted, kNoPermission, kCancelled.
  ServerSession(const LinkFile& link, std::string path, const Waiting& waiting);
  ~ServerSession();
  ServerSession(const ServerSession&) = delete;
  ServerSession& operator=(const ServerSession&) = delete;

  [[nodiscard]] bool IsUp() const { return connection_ != nullptr; }
  /// A server that follows another one can only be read.
  [[nodiscard]] bool IsStandby() const { return isStandby_; }
  /// It has taken the other one's place meanwhile.
  void NotePromoted() { isStandby_ = false; }
  [[nodiscard]] std::string Host() const;
  [[nodiscard]] std::string Encryption() const;

  /// One statement, in which $1, $2, ... are the parameters. It is prepared once and kept, and so is how the
  /// server runs it, until ForgetPlans().
  ServerResult Run(const std::string& sql, const ServerValues& values = {});
  /// The log has grown so much that the server may know a better way now.
  void ForgetPlans();
  /// One statement that will not be run again.
  ServerResult RunOnce(const std::string& sql);
  /// Several statements without parameters at once; what the last one gave.
  ServerResult RunScript(const std::string& sql);

  /// COPY ... FROM STDIN with these lines. They are on their way when this comes back; what the server says
  /// to them the next statement throws, or Settle().
  void StartCopy(const std::string& sql, std::string_view lines);
  /// Sends as much of them as goes without waiting.
  void GoOnSending();
  /// Waits until the server has taken them.
  void Settle();
  /// The same where it does not matter whether it has.
  void Abandon() noexcept;
  /// COPY ... TO STDOUT; each line without its end.
  void CopyOut(const std::string& sql, const std::function<void(std::string_view)>& line);

  /// The numbers that other sessions have announced since the last call.
  [[nodiscard]] std::vector<std::int64_t> Announced();

 private:
  [[nodiscard]] ServerResult Finish();
  void Send(int sent);
  void Flush();
  void AwaitInput();
  [[noreturn]] void EndCopy();
  void Ready();
  void Hand(const std::function<void(std::string_view)>& line, std::string_view text);
  [[noreturn]] void Throw(const pg_result* result);
  [[noreturn]] void ThrowLost();
  void Close() noexcept;

  std::string path_;
  bool isStandby_ = false;  // found out while the connection is made
  pg_conn* connection_ = nullptr;
  bool isCopying_ = false;                                 // what StartCopy() sent is not settled
  bool isUnsent_ = false;                                  // a part of it stands in the library's buffer
  std::unordered_map<std::string, std::string> prepared_;  // names by statement
};

}  // namespace varnlog::dao
