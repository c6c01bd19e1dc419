#include "db/dao/postgres/ServerConnect.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <regex>
#include <vector>

#include "db/dao/EngineError.h"
#include "db/dao/postgres/LibPq.h"
#include "db/dao/postgres/ServerErrors.h"
#include "platform/HostLookUp.h"
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

/// Asks now and then whether to go on, until what is awaited has come or it takes too long.
class Patience {
 public:
  explicit Patience(const std::function<bool()>& waiting) : waiting_(waiting) {}
  /// `hasCome` waits for a step itself. False when it has not come in time.
  [[nodiscard]] bool Await(const std::function<bool()>& hasCome) const {
    while (!hasCome()) {
      if (waiting_ && !waiting_()) throw EngineError(ErrorNumber::kCancelled, "The connection was given up.");
      if (Clock::now() > end_) return false;
    }
    return true;
  }

 private:
  const std::function<bool()>& waiting_;
  Clock::time_point end_ = Clock::now() + kPatience;
};

/// A host as the library is given it. By itself it would wait for a name server, and nobody could interrupt
/// it.
struct Addressed {
  std::string names;      // the host's name, once for each address
  std::string addresses;  // none for this machine, or where the library knows better
  std::string failure;    // why it cannot be reached
};

Addressed LookUp(const std::string& host, const Patience& patience) {
  Addressed found;
  if (host.empty() || host.front() == '/' || host.front() == '@') {
    found.names = host;
    return found;
  }
  const platform::HostLookUp lookUp(host);
  if (!patience.Await([&lookUp] { return lookUp.Await(kStep); }))
    found.failure = "no name server answers for '" + host + "'";
  else if (lookUp.Addresses().empty())
    found.failure = "'" + host + "': " + lookUp.Error();
  else
    for (const std::string& address : lookUp.Addresses()) {
      found.names += (found.names.empty() ? "" : ",") + host;
      found.addresses += (found.addresses.empty() ? "" : ",") + address;
    }
  return found;
}

Connection Start(const LinkFile& link, std::size_t host, const Addressed& where) {
  // A cable that was pulled out shows within seconds, not hours.
  static const std::string kUtf8 = "UTF8";
  static const std::string kSeconds = "5";
  static const std::string kProbes = "3";
  static const std::string kMilliseconds = "15000";
  Parameters parameters;
  parameters.Add("service", link.service);
  parameters.Add("host", where.names);
  parameters.Add("hostaddr", where.addresses);
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

// How far it came says what kept it from being made, in whatever language the library says it.
struct Attempt {
  ConnStatusType status = CONNECTION_STARTED;  // CONNECTION_STARTED: it does not answer in time
  ConnStatusType reached = CONNECTION_STARTED;
};

Attempt Await(PGconn* connection, const Patience& patience) {
  PostgresPollingStatusType polled = PGRES_POLLING_WRITING;
  Attempt attempt;
  while (Pq().status(connection) != CONNECTION_BAD && polled != PGRES_POLLING_OK &&
         polled != PGRES_POLLING_FAILED) {
    attempt.reached = Pq().status(connection);
    const bool writing = polled == PGRES_POLLING_WRITING;
    if (!patience.Await([&] { return platform::WaitForSocket(Pq().socket(connection), writing, kStep); }))
      return attempt;
    polled = Pq().connectPoll(connection);
  }
  attempt.status = Pq().status(connection);
  return attempt;
}

bool Is(PGconn* connection, const char* sql) {
  const std::unique_ptr<PGresult, decltype(&PQclear)> result(Pq().exec(connection, sql), Pq().clear);
  return Pq().ntuples(result.get()) == 1 && *Pq().getvalue(result.get(), 0, 0) == 't';
}

struct Failure {
  ErrorNumber number = ErrorNumber::kServerUnreachable;
  std::string reason;
};

// The library gives the state of a refusal within its message only: "FATAL:  3D000: database ...", the first
// word translated. A last line names the place in the server's source.
Failure FailureOf(const PGconn* connection, const Attempt& attempt) {
  static const std::regex kState("(:  )([0-9A-Z]{5}): ");
  static const std::regex kPlace("\\n[^\\n:]+:  \\w+, \\w+\\.c:\\d+");
  if (attempt.status == CONNECTION_STARTED) return {.reason = "it does not answer"};
  std::string message = std::regex_replace(std::string(Pq().errorMessage(connection)), kPlace, "");
  Failure failure;
  std::smatch state;
  if (std::regex_search(message, state, kState)) {
    failure.number = NumberOfState(state.str(2));
    message = std::regex_replace(message, kState, "$1");
  } else if (Pq().connectionNeedsPassword(connection) != 0) {
    failure.number = ErrorNumber::kBadAccount;
  } else if (attempt.reached == CONNECTION_SSL_STARTUP) {
    failure.number = ErrorNumber::kServerNotTrusted;
  }
  if (failure.number == ErrorNumber::kConnectionLost || failure.number == ErrorNumber::kUnexpected)
    failure.number = ErrorNumber::kServerUnreachable;
  while (!message.empty() && message.back() == '\n') message.pop_back();
  std::erase(message, '\t');
  std::ranges::replace(message, '\n', ' ');
  failure.reason = std::move(message);
  return failure;
}

std::string_view Saying(ErrorNumber number) {
  switch (number) {
    case ErrorNumber::kBadAccount:
      return "does not accept the account";
    case ErrorNumber::kNoPermission:
      return "does not let the account in";
    case ErrorNumber::kServerDatabaseMissing:
      return "has no such database";
    case ErrorNumber::kServerNotTrusted:
      return "cannot be reached over a protected connection";
    default:
      return "cannot be reached";
  }
}

// The first reason that is more than that nobody answers counts.
void Note(Failure& all, const Failure& failure) {
  if (all.number == ErrorNumber::kServerUnreachable) all.number = failure.number;
  all.reason += (all.reason.empty() ? "" : "; ") + failure.reason;
}

}  // namespace

PGconn* ConnectToServer(const LinkFile& link, const std::string& path, const std::function<bool()>& waiting,
                        bool& isStandby) {
  Connection standby;
  Failure failed;
  for (std::size_t host = 0; host < link.hosts.size(); ++host) {
    const Patience patience(waiting);
    const Addressed where = LookUp(link.hosts[host], patience);
    if (!where.failure.empty()) {
      Note(failed, {.reason = where.failure});
      continue;
    }
    Connection connection = Start(link, host, where);
    if (connection == nullptr) throw std::bad_alloc();
    Pq().setErrorVerbosity(connection.get(), PQERRORS_VERBOSE);
    const Attempt attempt = Await(connection.get(), patience);
    if (attempt.status == CONNECTION_OK) {
      Pq().setErrorVerbosity(connection.get(), PQERRORS_DEFAULT);
      if (Pq().serverVersion(connection.get()) < 150000)
        throw EngineError(ErrorNumber::kNotSupported,
                          "The server of '" + path + "' is older than version 15.");
      isStandby = Is(connection.get(), "SELECT pg_is_in_recovery()");
      if (!isStandby) return connection.release();
      if (standby == nullptr) standby = std::move(connection);
      continue;
    }
    Note(failed, FailureOf(connection.get(), attempt));
  }
  isStandby = standby != nullptr;
  if (isStandby) return standby.release();
  throw EngineError(failed.number, "The server of '" + path + "' " + std::string(Saying(failed.number)) +
                                       " (" + failed.reason + ").");
}

}  // namespace varnlog::dao
