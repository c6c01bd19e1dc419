#include "db/dao/sqlite/Statement.h"

#include <algorithm>
#include <new>
#include <utility>

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

namespace {

CellView ViewOf(sqlite3_value* value) {
  CellView view;
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return view;
    case SQLITE_INTEGER:
      view.kind = CellKind::kInteger;
      view.integer = sqlite3_value_int64(value);
      return view;
    case SQLITE_FLOAT:
      view.kind = CellKind::kReal;
      view.real = sqlite3_value_double(value);
      break;
    case SQLITE_BLOB:
      view.kind = CellKind::kBytes;
      break;
    default:
      view.kind = CellKind::kText;
  }
  const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr && view.kind == CellKind::kText) throw std::bad_alloc();
  view.text = {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
  return view;
}

}  // namespace

Statement::Statement(Connection& connection, std::string_view storageSql) : connection_(&connection) {
  const char* rest = nullptr;
  const int result =
      sqlite3_prepare_v3(connection.Handle(), storageSql.data(), static_cast<int>(storageSql.size()),
                         SQLITE_PREPARE_PERSISTENT, &handle_, &rest);
  if (result != SQLITE_OK) connection.Throw(result);
  const bool isOne = rest == storageSql.data() + storageSql.size();
  if (handle_ == nullptr || !isOne) {
    sqlite3_finalize(std::exchange(handle_, nullptr));
    throw EngineError(ErrorNumber::kSyntaxError, "Exactly one statement is expected.");
  }
  Register();
}

// A closed connection has finished all its statements, so it has to know them.
void Statement::Register() {
  try {
    connection_->statements_.insert(handle_);
  } catch (const std::bad_alloc&) {
    sqlite3_finalize(std::exchange(handle_, nullptr));
    throw;
  }
}

Statement::~Statement() {
  if (handle_ == nullptr || !connection_->IsOpen()) return;
  connection_->statements_.erase(handle_);
  sqlite3_finalize(handle_);
}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_), handle_(std::exchange(other.handle_, nullptr)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
  std::swap(connection_, other.connection_);
  std::swap(handle_, other.handle_);
  return *this;
}

void Statement::RequireOpen() const {
  if (handle_ == nullptr || !connection_->IsOpen())
    throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
}

bool Statement::IsReadOnly() const {
  return sqlite3_stmt_readonly(handle_) != 0;
}

void Statement::CheckBound(int result) {
  if (result != SQLITE_OK) connection_->Throw(result);
}

void Statement::BindNull(int parameter) {
  RequireOpen();
  CheckBound(sqlite3_bind_null(handle_, parameter));
}

void Statement::Bind(int parameter, std::int64_t number) {
  RequireOpen();
  CheckBound(sqlite3_bind_int64(handle_, parameter, number));
}

void Statement::Bind(int parameter, double number) {
  RequireOpen();
  CheckBound(sqlite3_bind_double(handle_, parameter, number));
}

void Statement::Bind(int parameter, std::string_view text) {
  RequireOpen();
  // An empty view may have no address at all, which would bind NULL.
  const char* const bytes = text.data() == nullptr ? "" : text.data();
  CheckBound(sqlite3_bind_text64(handle_, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::Bind(int parameter, const CellView& value) {
  if (value.kind == CellKind::kInteger) return Bind(parameter, value.integer);
  if (value.kind == CellKind::kReal) return Bind(parameter, value.real);
  if (value.kind == CellKind::kText) return Bind(parameter, value.text);
  BindNull(parameter);
}

void Statement::BindColumn(int parameter, const Statement& from, int column) {
  RequireOpen();
  CheckBound(sqlite3_bind_value(handle_, parameter, sqlite3_column_value(from.handle_, column)));
}

bool Statement::Step() {
  RequireOpen();
  connection_->WriteHeld();
  const int result = sqlite3_step(handle_);
  if (result == SQLITE_ROW) return true;
  // The message belongs to the connection and is gone after the reset.
  if (result != SQLITE_DONE) {
    ResetAtEnd reset(*this);
    connection_->Throw(result);
  }
  sqlite3_reset(handle_);
  return false;
}

void Statement::Reset() noexcept {
  if (handle_ != nullptr && connection_->IsOpen()) sqlite3_reset(handle_);
}

bool Statement::Sorted() const {
  return sqlite3_stmt_status(handle_, SQLITE_STMTSTATUS_SORT, 0) > 0;
}

int Statement::ColumnCount() const {
  return sqlite3_column_count(handle_);
}
int Statement::ColumnType(int column) const {
  return sqlite3_column_type(handle_, column);
}
std::int64_t Statement::Number(int column) const {
  return sqlite3_column_int64(handle_, column);
}
double Statement::Real(int column) const {
  return sqlite3_column_double(handle_, column);
}

std::string_view Statement::Text(int column) const {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
  if (text == nullptr) RequireMemory();
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

void Statement::GetValues(std::span<CellView> values) const {
  for (std::size_t i = 0; i < values.size(); ++i)
    values[i] = ViewOf(sqlite3_column_value(handle_, static_cast<int>(i)));
  RequireMemory();
}

// A text for which there was no memory looks like none at all, and would be written on as that.
void Statement::RequireMemory() const {
  if (sqlite3_errcode(sqlite3_db_handle(handle_)) == SQLITE_NOMEM) throw std::bad_alloc();
}

void AppendRow(RowSet& rows, const Statement& row) {
  rows.Append([&row](std::size_t column) {
    CellView value = ViewOf(sqlite3_column_value(row.Handle(), static_cast<int>(column)));
    if (value.kind == CellKind::kReal) value.text = {};
    if (value.kind == CellKind::kBytes) value.kind = CellKind::kText;
    return value;
  });
}

}  // namespace varnlog::dao
