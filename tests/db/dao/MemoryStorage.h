#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "db/dao/sqlite/TextFunctions.h"

namespace varnlog::dao {

/// The storage without a file, with the engine's order of texts.
class MemoryStorage {
 public:
  MemoryStorage() {
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open(":memory:", &opened), SQLITE_OK);
    connection_.reset(opened);
    RegisterText(opened);
  }

  void Run(const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << LastError();
  }
  /// What the storage says to a statement it cannot take; empty when it can.
  std::string Complaint(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(connection_.get(), sql.c_str(), -1, &statement, nullptr);
    sqlite3_finalize(statement);
    return result == SQLITE_OK ? "" : LastError();
  }
  /// The first column of all rows, separated by blanks.
  std::string Rows(const std::string& sql) {
    std::string rows;
    const auto append = [](void* out, int, char** values, char**) {
      auto& text = *static_cast<std::string*>(out);
      text += (text.empty() ? "" : " ") + std::string(values[0] == nullptr ? "NULL" : values[0]);
      return 0;
    };
    EXPECT_EQ(sqlite3_exec(connection_.get(), sql.c_str(), append, &rows, nullptr), SQLITE_OK)
        << LastError() << " in " << sql;
    return rows;
  }
  [[nodiscard]] sqlite3* Handle() const { return connection_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
  };
  [[nodiscard]] std::string LastError() const { return sqlite3_errmsg(connection_.get()); }
  std::unique_ptr<sqlite3, Close> connection_;
};

}  // namespace varnlog::dao
