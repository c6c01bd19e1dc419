#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "core/UserDialog.h"
#include "db/dao/DBEngine.h"
#include "db/dao/Recordset.h"
#include "intake/CToken.h"
#include "platform/Clock.h"

namespace varnlog::intake {

/// The imaging suite's default tube voltage and current, as they are written where a record has none.
struct TubeDefaults {
  std::string volt;
  std::string current;
};

/// Turns records into rows of TXray. The rules depend on one another, so their order is part of them.
class ExposureWriter {
 public:
  /// Throws EngineError, as every function here does when the log cannot be read or written.
  ExposureWriter(dao::Database& log, TubeDefaults defaults, const core::TextLookup& texts,
                 core::UserDialog& user, const platform::Clock& clock);
  ~ExposureWriter();

  enum class Done { kAdded, kChanged, kSkipped };
  /// Adds a row, changes one or does nothing. A date or time that cannot be read and a value that is too long
  /// for its field are reported and replaced in `token` by what is written instead.
  Done Take(CToken& token);

 private:
  struct Fields;

  /// The last date that was read from a property. Exposures come day by day and patient by patient.
  struct KnownDate {
    std::string text;
    platform::DateTime date;
  };

  [[nodiscard]] platform::DateTime ReadDate(CToken& token, CToken::Property property, core::TextKey message,
                                            KnownDate& known);
  [[nodiscard]] platform::DateTime ReadTime(CToken& token);
  void ReportDefault(const CToken& token, core::TextKey message, std::string_view shownDefault);
  void Fit(CToken& token, CToken::Property property, const dao::Field& field, core::TextKey caption);
  void ReportCutValues(const CToken& token);
  void WritePatient(const CToken& token, bool isNew);
  void WriteResponsible(CToken& token);
  void WriteRegion(CToken& token, bool isNew);
  void WriteDeviceValues(CToken& token, bool isNew);

  const core::TextLookup& texts_;
  core::UserDialog& user_;
  const platform::Clock& clock_;
  TubeDefaults defaults_;
  std::unique_ptr<dao::Recordset> rows_;
  std::unique_ptr<Fields> fields_;
  std::vector<core::TextKey> cut_;  // the fields for which the current record has too long values
  KnownDate knownBirthday_;
  KnownDate knownTakeDate_;
  platform::DateTime birthday_;
  platform::DateTime taken_;
};

}  // namespace varnlog::intake
