#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "db/dao/DBEngine.h"
#include "db/dao/Recordset.h"
#include "db/dao/SeeksAhead.h"
#include "intake/CToken.h"
#include "intake/RecordDates.h"
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
  ExposureWriter(dao::Database& log, TubeDefaults defaults, const platform::Clock& clock);
  ~ExposureWriter();

  enum class Done {
    kAdded,
    kChanged,
    kNoExposure,  // nothing for this log
    kKnown,       // a new exposure that stands in the log already
    kUnknown,     // information on an exposure that does not
  };
  /// Adds a row, changes one or does nothing. A date or time that cannot be read and a value that is too long
  /// for its field are replaced in `token` by what is written instead.
  Done Take(CToken& token);

  /// These records come next. Where looking them up one by one would cost much, that is done for all at once.
  void Expect(std::span<const CToken> tokens);

  /// The defaults that the record taken last was given, whether or not it was written.
  [[nodiscard]] const std::vector<DefaultTaken>& Defaults() const { return dates_.Defaults(); }
  /// The captions of the fields for which it had too long values and that were cut.
  [[nodiscard]] const std::vector<core::TextKey>& CutFields() const { return cut_; }

 private:
  struct Fields;

  void Fit(CToken& token, CToken::Property property, const dao::Field& field, core::TextKey caption);
  void WritePatient(const CToken& token, bool isNew);
  void WriteResponsible(CToken& token);
  void WriteRegion(CToken& token, bool isNew);
  void WriteDeviceValues(CToken& token, bool isNew);

  TubeDefaults defaults_;
  std::unique_ptr<dao::Recordset> rows_;
  std::unique_ptr<Fields> fields_;
  RecordDates dates_;
  RecordDates expectedDates_;
  CToken expected_;                   // the dates of one
  dao::SeeksAhead* ahead_ = nullptr;  // the rows, where they are
  std::vector<core::TextKey> cut_;
};

}  // namespace varnlog::intake
