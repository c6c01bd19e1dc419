#pragma once

#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "platform/Clock.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "seals/Verifier.h"
#include "tests/support/LogFolder.h"

namespace varnlog::seals {

/// A log of its own for each test, at a workstation of its own.
class SealedLog : public testing::Test, protected test::LogFolder {
 protected:
  SealedLog();
  ~SealedLog() override;

  /// Opens the log anew; nothing from an earlier opening is used any more.
  OpenReport Opens();
  /// Only the file, as a program that knows nothing of seals opens it.
  void OpensUnsealed();

  /// The imaging suite's rows, in one transaction. Every second value is open.
  void TakesIn(int exposures);
  /// The suite's information about one of them.
  void SuiteChanges(std::int64_t exposure, const std::map<std::string, std::string>& values);
  void Enters(std::int64_t exposure, const std::string& field, const std::string& value);
  void Locks(std::int64_t exposure, const std::string& flag);
  [[nodiscard]] std::string Value(std::int64_t exposure, const std::string& field);
  /// In the storage's SQL, the rules obeyed or not.
  void Executes(const std::string& sql) { log_->Execute(sql); }

  [[nodiscard]] Verification Verified() { return Verify(*log_); }
  void ExpectSound(const std::string& when = {});

  std::shared_ptr<dao::Database> log_;
  platform::Author author_{"anna", "Anna Müller", "Röntgen 1", "varnlog test", "1-1-a"};
  platform::FixedClock clock_{*platform::DateTime::FromCivil(2024, 6, 30, 12)};
  std::shared_ptr<Ledger> ledger_;

 private:
  void Edits(std::int64_t exposure, const std::map<std::string, std::string>& values);
  int taken_ = 0;
};

}  // namespace varnlog::seals
