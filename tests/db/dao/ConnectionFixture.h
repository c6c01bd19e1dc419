#pragma once

#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/rows/DistinctRows.h"
#include "tests/support/TestFolder.h"

namespace varnlog::dao {

/// A file with one small table, below the engine's public types.
class ConnectionTest : public testing::Test {
 protected:
  ConnectionTest() {
    log_->File().Execute(
        "CREATE TABLE TXray (tXrayCulIntIDPk INTEGER PRIMARY KEY, tXraySName TEXT(32) COLLATE JET, "
        "tXraySFirstname TEXT(32) COLLATE JET, tXrayDBirthday DATETIME, tXrayBEdDr YESNO)");
  }
  ~ConnectionTest() override { log_->Close(); }

  /// "('name', 'first name', 'birth date'), ..."
  static void Add(FileStorage& storage, const std::string& values) {
    storage.File().Execute("INSERT INTO TXray (tXraySName, tXraySFirstname, tXrayDBirthday) VALUES " +
                           values);
  }
  /// Few different names, some alike, some missing.
  void AddAtRandom(int count) {
    std::mt19937 random(11);
    const char* const names[] = {"'Müller'", "'MÜLLER'",  "'Mueller'", "'Weiß'",
                                 "'weiss'",  "'O''Neil'", "NULL",      "''"};
    const char* const dates[] = {"'1961-03-12 00:00:00'", "'1880-01-01 00:00:00'", "NULL"};
    std::string values;
    for (int i = 0; i < count; ++i)
      values += std::string(i == 0 ? "(" : ", (") + names[random() % 8] + ", " + names[random() % 8] + ", " +
                dates[random() % 3] + ")";
    Add(*log_, values);
  }
  /// That many different names, which nothing is to remember.
  void AddDifferent(int count, const std::string& around = "") {
    log_->File().Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                         std::to_string(count) + ") INSERT INTO TXray (tXraySName) SELECT i || '" + around +
                         "' FROM n");
  }

  test::TestFolder folder_;
  std::string path_ = (folder_ / "log.mdb").string();
  std::shared_ptr<EngineState> state_ = std::make_shared<EngineState>();
  std::shared_ptr<FileStorage> log_ = FileStorage::Create(path_, state_);
};

}  // namespace varnlog::dao
