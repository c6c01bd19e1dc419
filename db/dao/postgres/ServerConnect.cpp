#include "db/dao/postgres/ServerConnect.h"

#include <array>
#include <chrono>
#include <memory>
#include <vector>

#include "db/dao/EngineError.h"
#include "db/dao/postgres/LibPq.h"
#include "platform/Sockets.h"

namespace varnlog::dao {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPatience(5000);
/// Between two questions whether to go on.
constexpr std::chrono::milliseconds kStep(50);

struct Finish {
  void operator()(PGconn* connection) const { Pq().finish(connection); }
};
using Connection = std::unique_ptr<PGconn, Finish>;

// The library's parameters by name; empty ones are left to it.
class Parameters {
 public:
  void Add(const char* name, const std::string& value) {
    if (value.empty()) return;
    names_.push_back(name);
    values_.push_back(value.c_str());
  }
  [[nodiscard]] Connection Start() {
    names_.push_back(nullptr);
    values_.push_back(nullptr);
    return Connection(Pq().connectStartParams(names_.data(), values_.data(), 0));
  }

 private:
  std::vector<const char*> names_;
  std::vector<const char*> values_;
};

Connection Start(const LinkFile& link, std::size_t host) {
  // A cable that was pulled out shows within seconds, not hours.
  static const std::string kUtf8 = "UTF8";
  static const std::string kSeconds = "5";
  static const std::string kProbes = "3";
  static const std::string kMilliseconds = "15000";
  Parameters parameters;
  parameters.Add("service", link.service);
  parameters.Add("host", link.hosts[host]);
  parameters.Add("port", link.ports[host]);
  parameters.Add("dbname", link.database);
  parameters.Add("user", link.user);
  parameters.Add("sslmode", link.sslMode);
  parameters.Add("application_name", link.applicationName);
  parameters.Add("client_encoding", kUtf8);
  parameters.Add("keepalives_idle", kSeconds);
  parameters.Add("keepalives_interval", kSeconds);
  parameters.Add("keepalives_count", kProbes);
  parameters.Add("tcp_user_timeout", kMilliseconds);
  return parameters.Start();
}

// Returns when the connection stands, has failed or does not answer in time.
ConnStatusType Await(PGconn* connection, const std::function<bool()>& waiting) {
  const auto end = Clock::now() + kPatience;
  PostgresPollingStatusType status = PGRES_POLLING_WRITING;
  while (Pq().status(connection) != CONNECTION_BAD && status != PGRES_POLLING_OK &&
         status != PGRES_POLLING_FAILED) {
    const bool writing = status == PGRES_POLLING_WRITING;
    while (!platform::WaitForSocket(Pq().socket(connection), writing, kStep)) {
      if (waiting && !waiting()) throw EngineError(ErrorNumber::kCancelled, "The connection was given up.");
      if (Clock::now() > end) return CONNECTION_STARTED;
    }
    status = Pq().connectPoll(connection);
  }
  return Pq().status(connection);
}

bool Is(PGconn* connection, const char* sql) {
  const std::unique_ptr<PGresult, decltype(&PQclear)> result(Pq().exec(connection, sql), Pq().clear);
  return Pq().ntuples(result.get()) == 1 && *Pq().getvalue(result.get(), 0, 0) == 't';
}

std::string OneLine(const char* message) {
  std::string line(message);
  while (!line.empty() && line.back() == '\n') line.pop_back();
  for (char& c : line)
    if (c == '\n') c = ' ';
  return line;
}

// The library tells them apart by its message alone.
bool IsRefusedAccount(const PGconn* connection, const std::string& message) {
  return Pq().connectionNeedsPassword(connection) != 0 || Pq().connectionUsedPassword(connection) != 0 ||
         message.find("authentication failed") != std::string::npos ||
         message.find("no pg_hba.conf entry") != std::string::npos ||
         (message.find("role \"") != std::string::npos &&
          message.find("does not exist") != std::string::npos);
}

}  // namespace

PGconn* ConnectToServer(const LinkFile& link, const std::string& path, const std::function<bool()>& waiting,
                        bool& isStandby) {
  Connection standby;
  ErrorNumber number = ErrorNumber::kServerUnreachable;
  std::string reasons;
  for (std::size_t host = 0; host < link.hosts.size(); ++host) {
    Connection connection = Start(link, host);
    if (connection == nullptr) throw std::bad_alloc();
    const ConnStatusType status = Await(connection.get(), waiting);
    if (status == CONNECTION_OK) {
      if (Pq().serverVersion(connection.get()) < 150000)
        throw EngineError(ErrorNumber::kNotSupported,
                          "The server of '" + path + "' is older than version 15.");
      isStandby = Is(connection.get(), "SELECT pg_is_in_recovery()");
      if (!isStandby) return connection.release();
      if (standby == nullptr) standby = std::move(connection);
      continue;
    }
    const std::string message =
        status == CONNECTION_BAD ? OneLine(Pq().errorMessage(connection.get())) : "it does not answer";
    if (IsRefusedAccount(connection.get(), message)) number = ErrorNumber::kBadAccount;
    reasons += (reasons.empty() ? "" : "; ") + message;
  }
  isStandby = standby != nullptr;
  if (isStandby) return standby.release();
  throw EngineError(number, "The server of '" + path + "' cannot be reached (" + reasons + ").");
}

}  // namespace varnlog::dao
