#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "db/dao/rows/RowSet.h"

struct sqlite3_stmt;

namespace varnlog::dao {

class Connection;

/// One prepared statement of a connection, which must outlive it. Every function throws EngineError; after
/// Connection::Close() it is kObjectInvalid.
///
/// A statement is run to its end or reset before control leaves this folder: one that is left in the middle
/// would keep other workstations from writing.
class Statement {
 public:
  Statement() = default;
  /// Exactly one statement in the storage's SQL; anything behind it is an error.
  Statement(Connection& connection, std::string_view storageSql);
  ~Statement();
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) noexcept;

  [[nodiscard]] bool IsPrepared() const { return handle_ != nullptr; }
  /// True when it cannot change the file.
  [[nodiscard]] bool IsReadOnly() const;

  // Parameters count from 1 and keep their values until bound again. The bytes of a text must stay where they
  // are until Reset() is called after the last Step().
  void BindNull(int parameter);
  void Bind(int parameter, std::int64_t number);
  void Bind(int parameter, double number);
  void Bind(int parameter, std::string_view text);
  void Bind(int parameter, const CellView& value);
  /// A column of the row that `from` stands on, as it lies in the file.
  void BindColumn(int parameter, const Statement& from, int column);

  /// True when there is a row; at the end, and before an error is thrown, the statement is reset.
  bool Step();
  /// Runs a statement that gives no rows.
  void Run() {
    while (Step()) {
    }
  }
  void Reset() noexcept;

  /// True when the rows are sorted after they were all read, so that the first one costs as much as all.
  [[nodiscard]] bool Sorted() const;

  // Columns of the row, counted from 0.
  [[nodiscard]] int ColumnCount() const;
  [[nodiscard]] int ColumnType(int column) const;
  [[nodiscard]] std::int64_t Number(int column) const;
  [[nodiscard]] double Real(int column) const;
  /// Until the next Step() or Reset().
  [[nodiscard]] std::string_view Text(int column) const;
  /// The columns that `values` has room for, read in less time than one by one; until the next Step() or
  /// Reset().
  void GetValues(std::span<CellView> values) const;

  [[nodiscard]] sqlite3_stmt* Handle() const { return handle_; }

 private:
  void CheckBound(int result);
  void RequireOpen() const;
  void RequireMemory() const;
  void Register();

  Connection* connection_ = nullptr;
  sqlite3_stmt* handle_ = nullptr;
};

/// Resets a statement that may be left before its end.
class ResetAtEnd {
 public:
  explicit ResetAtEnd(Statement& statement) : statement_(statement) {}
  ~ResetAtEnd() { statement_.Reset(); }
  ResetAtEnd(const ResetAtEnd&) = delete;
  ResetAtEnd& operator=(const ResetAtEnd&) = delete;

 private:
  Statement& statement_;
};

/// Appends the statement's current row.
void AppendRow(RowSet& rows, const Statement& row);

}  // namespace varnlog::dao
