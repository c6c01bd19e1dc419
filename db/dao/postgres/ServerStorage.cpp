#include "db/dao/postgres/ServerStorage.h"

#include <algorithm>
#include <random>
#include <utility>

#include "db/dao/postgres/OpenServer.h"
#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

using Clock = std::chrono::steady_clock;

/// The layout of the log's schema that this program knows.
constexpr std::int64_t kLayout = 1;
/// After a connection that failed nobody waits for the next one so soon.
constexpr std::chrono::seconds kRest(2);

std::string NewId() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::random_device random;
  std::string id(32, '0');
  for (char& digit : id) digit = kDigits[random() % kDigits.size()];
  return id;
}

}  // namespace

ServerStorage::ServerStorage(const std::string& path, Mode mode, const std::shared_ptr<EngineState>& state)
    : Storage(path, mode, state), id_(NewId()) {}

ServerStorage::~ServerStorage() {
  Close();
}

std::shared_ptr<ServerStorage> ServerStorage::Open(const std::string& path, Mode mode,
                                                   const std::shared_ptr<EngineState>& state) {
  const LinkFile link = ReadLinkFile(path);
  auto session = std::make_unique<ServerSession>(link, path, state->waiting);
  mode.readOnly = mode.readOnly || session->IsStandby();
  const std::shared_ptr<ServerStorage> storage(new ServerStorage(path, mode, state));
  storage->link_ = link;
  storage->channel_ = QuoteIdentifier("varnlog " + link.schema);
  storage->session_ = std::move(session);
  storage->Connect();
  std::erase_if(state->storages, [](const auto& each) { return each.expired(); });
  state->storages.push_back(storage);
  return storage;
}

// Makes the connection if there is none, and readies it.
void ServerStorage::Connect() {
  if (failure_ && Clock::now() - lastFailure_ < kRest) throw EngineError(*failure_);
  if (isConnecting_)
    throw EngineError(ErrorNumber::kServerUnreachable, "The server of '" + Path() + "' is being looked for.");
  // While a connection is waited for, a window may ask for rows.
  struct Mark {
    explicit Mark(bool& value) : mark(value) { mark = true; }
    ~Mark() { mark = false; }
    bool& mark;
  } const connecting(isConnecting_);
  try {
    if (session_ == nullptr || !session_->IsUp())
      session_ = std::make_unique<ServerSession>(link_, Path(), State()->waiting);
    // Grouping a whole log needs more memory than a server gives by itself, and no machine code; the server
    // takes a log's patients for many more than they are and would do it with one processor.
    static_cast<void>(
        session_->RunScript("SET client_min_messages = warning; SET standard_conforming_strings = on; "
                            "SET work_mem = '64MB'; SET jit = off; "
                            "SET parallel_tuple_cost = 0.005; "
                            "SET search_path TO " +
                            QuoteIdentifier(link_.schema)));
    CheckLayout();
    Listen();
  } catch (const EngineError& error) {
    session_.reset();
    const bool isGone =
        error.number() == ErrorNumber::kServerUnreachable || error.number() == ErrorNumber::kConnectionLost;
    if (isGone) {
      lastFailure_ = Clock::now();
      failure_.emplace(ErrorNumber::kServerUnreachable, error.what());
    }
    throw;
  }
}

void ServerStorage::CheckLayout() {
  std::int64_t layout = 0;
  try {
    layout = StateFrom(session_->Run(kStateSql))["layout"];
  } catch (const EngineError& error) {
    // A table of that name may also be somebody else's.
    if (error.number() != ErrorNumber::kTableNotFound && error.number() != ErrorNumber::kTooFewParameters)
      throw;
  }
  if (layout == kLayout) return;
  const ServerResult closed = session_->Run(
      "SELECT 1 FROM pg_namespace WHERE nspname = $1 AND NOT has_schema_privilege(oid, 'USAGE')",
      {std::string_view(link_.schema)});
  if (closed.RowCount() > 0)
    throw EngineError(ErrorNumber::kNoPermission,
                      "The account has no right to use the log that '" + Path() + "' names.");
  throw EngineError(ErrorNumber::kUnrecognisedFormat,
                    "The schema '" + link_.schema + "' that '" + Path() + "' names " +
                        (layout == 0 ? "holds no log." : "holds a log of a later version of this program."));
}

void ServerStorage::Close() noexcept {
  isOpen_ = false;
  ForgetJournal();
  tables_.clear();
  ForgetAdded();
  session_.reset();
}

ServerSession& ServerStorage::Line() {
  if (!isOpen_) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  if (session_ != nullptr && session_->IsUp()) return *session_;
  if (transaction_ != Transaction::kNone) {
    transaction_ = Transaction::kLost;
    throw EngineError(ErrorNumber::kConnectionLost,
                      "The connection to the server of '" + Path() + "' was lost; the change was undone.");
  }
  Connect();
  return *session_;
}

// Outside a transaction what a lost connection has stopped is begun again on a new one.
template <typename Operation>
auto ServerStorage::Attempt(const Operation& operation) {
  SendAdded();
  try {
    RenewPlans();
    return operation(Line());
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kConnectionLost) throw;
    if (transaction_ != Transaction::kNone) {
      transaction_ = Transaction::kLost;
      throw;
    }
  }
  return operation(Line());
}

// A way to find rows that was chosen while a table was nearly empty would still be taken when an update has
// filled it. Of others' updates only their number is known.
void ServerStorage::RenewPlans() {
  constexpr std::chrono::seconds kOthersMayFill(10);
  constexpr std::int64_t kGrowth = 4;
  const std::int64_t others = changes_ - ownCommitted_;
  const bool mayBeFull = others != othersAtPlans_ && Clock::now() - plansMade_ > kOthersMayFill;
  if (!mayBeFull && rowsAdded_ < rowsToRenew_) return;
  while (rowsAdded_ >= rowsToRenew_) rowsToRenew_ *= kGrowth;
  othersAtPlans_ = others;
  plansMade_ = Clock::now();
  Line().ForgetPlans();
}

ServerResult ServerStorage::Run(const std::string& sql, const ServerValues& values) {
  return Attempt([&](ServerSession& session) { return session.Run(sql, values); });
}

ServerResult ServerStorage::RunAhead(const std::string& sql, const ServerValues& values) {
  if (transaction_ != Transaction::kWriting) return Run(sql, values);
  try {
    return Line().Run(sql, values);
  } catch (const EngineError& error) {
    if (error.number() == ErrorNumber::kConnectionLost) transaction_ = Transaction::kLost;
    throw;
  }
}

ServerResult ServerStorage::RunOnce(const std::string& sql) {
  return Attempt([&](ServerSession& session) { return session.RunOnce(sql); });
}

ServerResult ServerStorage::RunScript(const std::string& sql) {
  return Attempt([&](ServerSession& session) { return session.RunScript(sql); });
}

void ServerStorage::RunStorageSql(std::string_view storageSql) {
  static_cast<void>(RunScript(std::string(storageSql)));
  tables_.clear();
  asked_.clear();
  ++epoch_;
}

void ServerStorage::CopyOut(const std::string& sql, const std::function<void(std::string_view)>& line) {
  bool hasBegun = false;
  const auto take = [&](std::string_view text) {
    hasBegun = true;
    line(text);
  };
  Attempt([&](ServerSession& session) {
    if (hasBegun)
      throw EngineError(ErrorNumber::kConnectionLost,
                        "The connection to the server of '" + Path() + "' was lost.");
    session.CopyOut(sql, take);
  });
}

std::int64_t ServerStorage::NextCounter(const TableSchema& table) {
  std::int64_t& last = usedCounters_.try_emplace(table.name, counters_[table.name]).first->second;
  if (last >= kMostCounter)
    throw EngineError(ErrorNumber::kRuleViolated,
                      "The counter of the table '" + table.name + "' is used up.");
  return ++last;
}

void ServerStorage::SetCounter(const TableSchema& table, std::int64_t last) {
  std::int64_t& counter = usedCounters_.try_emplace(table.name, counters_[table.name]).first->second;
  counter = std::max(counter, last);
}

std::int64_t ServerStorage::LastCounter(const TableSchema& table) {
  const auto used = usedCounters_.find(table.name);
  return used != usedCounters_.end() ? used->second : StateFrom(Run(kStateSql))[table.name];
}

std::optional<std::int64_t> ServerStorage::NumberFrom(const TableSchema& table,
                                                      const std::string& expression) {
  constexpr std::size_t kMostAsked = 16;
  const auto from = [](const std::string& sql, const std::string& name) {
    return "(SELECT " + sql + " FROM " + QuoteIdentifier(name) + ")";
  };
  const auto asked = std::ranges::find_if(asked_, [&](const AskedNumber& each) {
    return each.table == table.name && each.expression == expression;
  });
  if (WriteRight() == 0 || (asked == asked_.end() && asked_.size() == kMostAsked)) {
    const ServerResult found = Run("SELECT " + from(expression, table.name));
    return found.IsNull(0, 0) ? std::nullopt : std::optional(found.Number(0, 0));
  }
  const auto place = static_cast<std::size_t>(asked - asked_.begin());
  if (asked == asked_.end()) asked_.push_back({.table = table.name, .expression = expression, .number = {}});
  if (asked_[place].writeRight != WriteRight() || asked_[place].written != written_[table.name]) {
    std::string list;
    for (const AskedNumber& each : asked_)
      list += (list.empty() ? "" : ", ") + from(each.expression, each.table);
    const ServerResult found = Run("SELECT " + list);
    for (std::size_t i = 0; i < asked_.size(); ++i) {
      const int column = static_cast<int>(i);
      asked_[i].number = found.IsNull(0, column) ? std::nullopt : std::optional(found.Number(0, column));
      asked_[i].writeRight = WriteRight();
      asked_[i].written = written_[asked_[i].table];
    }
  }
  return asked_[place].number;
}

std::string ServerStorage::KeyField(const TableSchema& table) {
  for (const FieldDef& field : table.fields)
    if (field.isCounter) return field.name;
  return "varnlog_id";
}

// From now on, and what was announced before.
void ServerStorage::Listen() {
  if (!session_->IsStandby()) static_cast<void>(session_->RunScript("LISTEN " + channel_));
  changes_ = std::max(changes_, StateFrom(session_->Run(kStateSql))["changes"]);
}

// A server that follows another one announces nothing, so it is asked now and then, until it takes the other
// one's place.
void ServerStorage::AskStandby() {
  constexpr std::chrono::seconds kBetween(2);
  if (!Line().IsStandby() || Clock::now() - askedStandby_ < kBetween) return;
  const ServerResult found =
      Run("SELECT value, pg_is_in_recovery()::int FROM varnlog_state WHERE name = 'changes'");
  askedStandby_ = Clock::now();
  changes_ = std::max(changes_, found.Number(0, 0));
  if (found.Number(0, 1) != 0) return;
  session_->NotePromoted();
  Listen();
}

void ServerStorage::HearAnnounced() {
  heard_ = Clock::now();
  if (session_ == nullptr || !session_->IsUp()) return;
  try {
    for (const std::int64_t number : session_->Announced()) changes_ = std::max(changes_, number);
  } catch (const EngineError&) {
    // The next statement finds the connection lost; until then rows are shown as they were read.
    return;
  }
}

RowStamp ServerStorage::RecentStamp() {
  constexpr std::chrono::milliseconds kRecent(10);
  if (Clock::now() - heard_ > kRecent) HearAnnounced();
  return {changes_ - ownCommitted_, ownChanges_, epoch_};
}

// Announcements that a lost connection has missed the new one makes up for.
RowStamp ServerStorage::Stamp() {
  HearAnnounced();
  if (transaction_ == Transaction::kNone) AskStandby();
  return {changes_ - ownCommitted_, ownChanges_, epoch_};
}

// Asked of the log itself: an announcement may still be on its way.
std::int64_t ServerStorage::OthersVersion() {
  changes_ = std::max(changes_, StateFrom(Run(kStateSql))["changes"]);
  return changes_ - ownCommitted_;
}

RowStore::State ServerStorage::StateAt(std::int64_t changes) {
  changes_ = std::max(changes_, changes);
  return {{changes_ - ownCommitted_, ownChanges_, epoch_}, changes - ownCommitted_};
}

void ServerStorage::Refresh() {
  if (session_ == nullptr && !inWork_) return;
  if (transaction_ == Transaction::kWriting) SettleAdded();
  RequireIntactWork();
  HearAnnounced();
  ++epoch_;
}

std::shared_ptr<Storage> OpenServer(const std::string& path, Storage::Mode mode,
                                    const std::shared_ptr<EngineState>& state) {
  return ServerStorage::Open(path, mode, state);
}

}  // namespace varnlog::dao
