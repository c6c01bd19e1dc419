#pragma once

#include <string>
#include <utility>
#include <vector>

#include "legacy/JetDatabase.h"
#include "legacy/LogSchema.h"

namespace varnlog::legacy {

/// A log in an old file, its rows in the form of the current version: one value a column of
/// core::ExposureFields(), the id first. What a log of version 1.0 does not have yet reads as NULL or false.
class OldLog {
 public:
  /// Looks at `file`, which must outlive the log. Fails as JetDatabase::Open() and Table() do:
  /// kTableMissing or kTableLinked for a database that is no log.
  [[nodiscard]] static Result<OldLog> Open(Bytes file);

  [[nodiscard]] const JetDatabase& Database() const { return database_; }
  /// The value of "DBVersion"; empty when there is none.
  [[nodiscard]] std::string Version() const;
  /// Key and value of every setting, as far as they could be read.
  [[nodiscard]] const std::vector<std::pair<Value, Value>>& Settings() const { return settings_; }
  /// The id given last.
  [[nodiscard]] std::uint32_t LastId() const { return exposures_.lastId; }

  RowCount ReadExposures(const RowVisitor& visitor, FaultList& faults) const;

  /// What was wrong with the file, the definitions and the settings; not with the exposures.
  [[nodiscard]] const FaultList& Faults() const { return faults_; }

 private:
  OldLog(JetDatabase database, JetTable exposures)
      : database_(std::move(database)), exposures_(std::move(exposures)) {}
  void ReadSettings();

  JetDatabase database_;
  JetTable exposures_;
  std::vector<int> columns_;  // of exposures_, -1 for one that is not there
  std::vector<std::pair<Value, Value>> settings_;
  FaultList faults_;
};

}  // namespace varnlog::legacy
