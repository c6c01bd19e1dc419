#include "db/dao/postgres/ServerSession.h"

#include <charconv>
#include <utility>

#include "db/dao/EngineError.h"
#include "db/dao/postgres/LibPq.h"
#include "db/dao/postgres/ServerConnect.h"
#include "db/dao/postgres/ServerErrors.h"
#include "db/dao/postgres/ServerText.h"
#include "platform/Sockets.h"

namespace varnlog::dao {

namespace {

/// A server that says nothing for so long while it works on a statement has gone away.
constexpr std::chrono::minutes kLongestSilence(15);
constexpr std::size_t kMostPrepared = 256;

// The numbers of the server's types; they never change.
enum class ServerType : Oid {
  kBool = 16,
  kInt8 = 20,
  kInt2 = 21,
  kInt4 = 23,
  kFloat4 = 700,
  kFloat8 = 701,
  kNumeric = 1700,
};

CellKind KindOf(Oid type) {
  switch (static_cast<ServerType>(type)) {
    case ServerType::kBool:
    case ServerType::kInt2:
    case ServerType::kInt4:
    case ServerType::kInt8:
      return CellKind::kInteger;
    case ServerType::kFloat4:
    case ServerType::kFloat8:
    case ServerType::kNumeric:
      return CellKind::kReal;
  }
  return CellKind::kText;
}

std::string MessageOf(const PGresult* result, const PGconn* connection) {
  const char* const primary = Pq().resultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
  std::string message(primary == nullptr ? Pq().errorMessage(connection) : primary);
  while (!message.empty() && message.back() == '\n') message.pop_back();
  return message;
}

template <typename Value>
Value Parsed(std::string_view text) {
  Value value{};
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace

void ServerResult::Clear::operator()(pg_result* result) const {
  Pq().clear(result);
}

int ServerResult::RowCount() const {
  return Pq().ntuples(result_.get());
}
int ServerResult::ColumnCount() const {
  return Pq().nfields(result_.get());
}
std::string ServerResult::ColumnName(int column) const {
  return Pq().fname(result_.get(), column);
}
bool ServerResult::IsNull(int row, int column) const {
  return Pq().getisnull(result_.get(), row, column) != 0;
}
std::string_view ServerResult::Text(int row, int column) const {
  const LibPq& pq = Pq();
  const std::string_view text(pq.getvalue(result_.get(), row, column),
                              static_cast<std::size_t>(pq.getlength(result_.get(), row, column)));
  if (!HasZeroOnServer(text)) return text;
  const auto [known, isNew] = texts_.try_emplace({row, column});
  if (isNew) known->second = FromServer(text);
  return known->second;
}
std::int64_t ServerResult::Number(int row, int column) const {
  return Parsed<std::int64_t>(Text(row, column));
}
std::int64_t ServerResult::Changed() const {
  return Parsed<std::int64_t>(Pq().cmdTuples(result_.get()));
}

CellView ServerResult::Cell(int row, int column) const {
  if (kinds_.empty())
    for (int i = 0; i < ColumnCount(); ++i) kinds_.push_back(KindOf(Pq().ftype(result_.get(), i)));
  const CellKind kind = kinds_[static_cast<std::size_t>(column)];
  if (kind == CellKind::kText) {
    const std::string_view text = Text(row, column);
    if (text.empty() && IsNull(row, column)) return {};
    return {.kind = kind, .integer = 0, .real = 0, .text = text};
  }
  // A number has at least one digit.
  const std::string_view digits = Pq().getvalue(result_.get(), row, column);
  if (digits.empty()) return {};
  if (kind == CellKind::kReal)
    return {.kind = kind, .integer = 0, .real = Parsed<double>(digits), .text = {}};
  return {.kind = kind, .integer = digits == "t" ? 1 : Parsed<std::int64_t>(digits), .real = 0, .text = {}};
}

ServerSession::ServerSession(const LinkFile& link, std::string path, const Waiting& waiting)
    : path_(std::move(path)), connection_(ConnectToServer(link, path_, waiting, isStandby_)) {
  // Notices are for whoever reads the server's log.
  Pq().setNoticeProcessor(
      connection_, [](void*, const char*) {}, nullptr);
  Pq().setnonblocking(connection_, 1);
}

ServerSession::~ServerSession() {
  Close();
}

void ServerSession::Close() noexcept {
  prepared_.clear();
  isCopying_ = false;
  if (connection_ != nullptr) Pq().finish(std::exchange(connection_, nullptr));
}

std::string ServerSession::Host() const {
  const char* const host = IsUp() ? Pq().host(connection_) : nullptr;
  return host == nullptr ? "" : host;
}

std::string ServerSession::Encryption() const {
  if (!IsUp() || Pq().sslInUse(connection_) == 0) return {};
  const char* const protocol = Pq().sslAttribute(connection_, "protocol");
  const char* const cipher = Pq().sslAttribute(connection_, "cipher");
  return std::string(protocol == nullptr ? "TLS" : protocol) + (cipher == nullptr ? "" : ", ") +
         (cipher == nullptr ? "" : cipher);
}

void ServerSession::ThrowLost() {
  const std::string message = IsUp() ? MessageOf(nullptr, connection_) : std::string();
  Close();
  throw EngineError(ErrorNumber::kConnectionLost,
                    "The connection to the server of '" + path_ + "' was lost (" + message + ").");
}

void ServerSession::Throw(const PGresult* result) {
  const char* const code = Pq().resultErrorField(result, PG_DIAG_SQLSTATE);
  const std::string state = code == nullptr ? "08006" : code;
  const std::string message = MessageOf(result, connection_);
  const bool isLost = Pq().status(connection_) == CONNECTION_BAD || state.starts_with("57P");
  if (isLost) Close();
  ThrowServerError(isLost && !state.starts_with("57P") ? "08006" : state, path_, message);
}

void ServerSession::Send(int sent) {
  if (sent == 0) ThrowLost();
  Flush();
}

void ServerSession::Flush() {
  for (;;) {
    const int left = Pq().flush(connection_);
    if (left == 0) return;
    if (left < 0 || !platform::WaitForSocket(Pq().socket(connection_), true, kLongestSilence)) ThrowLost();
    if (Pq().consumeInput(connection_) == 0) ThrowLost();
  }
}

void ServerSession::AwaitInput() {
  while (Pq().isBusy(connection_) != 0) {
    if (!platform::WaitForSocket(Pq().socket(connection_), false, kLongestSilence)) ThrowLost();
    if (Pq().consumeInput(connection_) == 0) ThrowLost();
  }
}

// Takes all that the server has to say to what was sent, so that the next statement finds the line free.
ServerResult ServerSession::Finish() {
  ServerResult last(nullptr);
  std::unique_ptr<PGresult, decltype(&PQclear)> failed(nullptr, Pq().clear);
  for (;;) {
    AwaitInput();
    PGresult* const next = Pq().getResult(connection_);
    if (next == nullptr) break;
    const ExecStatusType status = Pq().resultStatus(next);
    if (status == PGRES_FATAL_ERROR || status == PGRES_BAD_RESPONSE) {
      if (failed == nullptr)
        failed.reset(next);
      else
        Pq().clear(next);
      // Behind a broken connection there is nothing more to come.
      if (Pq().status(connection_) == CONNECTION_BAD) break;
      continue;
    }
    last = ServerResult(next);
    if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT) break;
  }
  if (failed != nullptr) Throw(failed.get());
  return last;
}

ServerResult ServerSession::Run(const std::string& sql, const ServerValues& values) {
  Ready();
  auto known = prepared_.find(sql);
  if (known == prepared_.end()) {
    if (prepared_.size() >= kMostPrepared) {
      static_cast<void>(RunScript("DEALLOCATE ALL"));
      prepared_.clear();
    }
    std::string name = "s" + std::to_string(prepared_.size());
    Send(Pq().sendPrepare(connection_, name.c_str(), sql.c_str(), 0, nullptr));
    static_cast<void>(Finish());
    known = prepared_.emplace(sql, std::move(name)).first;
  }
  // The library takes texts that end with a zero byte.
  std::vector<std::string> texts;
  std::vector<const char*> pointers;
  texts.reserve(values.size());
  for (const auto& value : values) {
    texts.push_back(ToServer(value.value_or(std::string_view())));
    pointers.push_back(value ? texts.back().c_str() : nullptr);
  }
  Send(Pq().sendQueryPrepared(connection_, known->second.c_str(), static_cast<int>(values.size()),
                              pointers.data(), nullptr, nullptr, 0));
  return Finish();
}

void ServerSession::ForgetPlans() {
  static_cast<void>(RunScript("DISCARD PLANS"));
}

ServerResult ServerSession::RunOnce(const std::string& sql) {
  Ready();
  Send(Pq().sendQueryParams(connection_, sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 0));
  return Finish();
}

ServerResult ServerSession::RunScript(const std::string& sql) {
  Ready();
  Send(Pq().sendQuery(connection_, sql.c_str()));
  return Finish();
}

void ServerSession::Ready() {
  if (!IsUp()) ThrowLost();
  Settle();
}

// The library keeps what does not go at once.
void ServerSession::StartCopy(const std::string& sql, std::string_view lines) {
  static_cast<void>(RunScript(sql));
  int put = 0;
  while ((put = Pq().putCopyData(connection_, lines.data(), static_cast<int>(lines.size()))) == 0) Flush();
  if (put < 0) EndCopy();
  while ((put = Pq().putCopyEnd(connection_, nullptr)) == 0) Flush();
  if (put < 0) EndCopy();
  isCopying_ = true;
  isUnsent_ = true;
  GoOnSending();
}

// A connection that is lost here the next statement finds lost.
void ServerSession::GoOnSending() {
  if (isUnsent_) isUnsent_ = Pq().flush(connection_) > 0;
}

void ServerSession::Settle() {
  if (!std::exchange(isCopying_, false)) return;
  isUnsent_ = false;
  Flush();
  static_cast<void>(Finish());
}

void ServerSession::Abandon() noexcept {
  try {
    Settle();
  } catch (const std::exception&) {
    // What comes next undoes it.
    return;
  }
}

// The server has said in the middle of it why it takes no more.
void ServerSession::EndCopy() {
  static_cast<void>(Finish());
  ThrowLost();
}

void ServerSession::CopyOut(const std::string& sql, const std::function<void(std::string_view)>& line) {
  static_cast<void>(RunScript(sql));
  for (;;) {
    char* bytes = nullptr;
    const int size = Pq().getCopyData(connection_, &bytes, 1);
    if (size > 0) {
      const std::unique_ptr<char, decltype(&PQfreemem)> owned(bytes, Pq().freemem);
      Hand(line, std::string_view(bytes, static_cast<std::size_t>(size) - 1));
    } else if (size == 0) {
      if (!platform::WaitForSocket(Pq().socket(connection_), false, kLongestSilence)) ThrowLost();
      if (Pq().consumeInput(connection_) == 0) ThrowLost();
    } else {
      break;
    }
  }
  static_cast<void>(Finish());
}

// A copy that is left in the middle leaves the connection of no use.
void ServerSession::Hand(const std::function<void(std::string_view)>& line, std::string_view text) {
  try {
    line(text);
  } catch (const std::exception&) {
    Close();
    throw;
  }
}

std::vector<std::int64_t> ServerSession::Announced() {
  std::vector<std::int64_t> numbers;
  if (!IsUp()) return numbers;
  if (Pq().consumeInput(connection_) == 0) ThrowLost();
  for (;;) {
    const std::unique_ptr<PGnotify, decltype(&PQfreemem)> notify(Pq().notifies(connection_), Pq().freemem);
    if (notify == nullptr) return numbers;
    if (notify->be_pid != Pq().backendPID(connection_))
      numbers.push_back(Parsed<std::int64_t>(notify->extra));
  }
}

}  // namespace varnlog::dao
