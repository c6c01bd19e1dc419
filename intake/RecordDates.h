#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/TextLookup.h"
#include "intake/CToken.h"
#include "platform/Clock.h"

namespace varnlog::intake {

/// A date or time of a record that could not be read, and what stands in the log for it.
struct DefaultTaken {
  core::TextKey message;   // says so, with the placeholders of TextOf()
  std::string_view shown;  // the default
};

/// Reads the dates of records.
class RecordDates {
 public:
  explicit RecordDates(const platform::Clock& clock) : clock_(clock) {}

  /// Reads birth date, date and time of `token`; a text that cannot be read is replaced by its default there.
  void Read(CToken& token);

  [[nodiscard]] platform::DateTime Birthday() const { return birthday_; }
  /// Date and time of the exposure.
  [[nodiscard]] platform::DateTime Taken() const { return taken_; }
  /// Those of the record read last.
  [[nodiscard]] const std::vector<DefaultTaken>& Defaults() const { return defaults_; }

 private:
  /// The last date that was read from a property. Exposures come day by day and patient by patient.
  struct KnownDate {
    std::string text;
    platform::DateTime date;
  };
  [[nodiscard]] platform::DateTime ReadDate(std::string& text, core::TextKey message, KnownDate& known);
  [[nodiscard]] platform::DateTime ReadTime(std::string& text);

  const platform::Clock& clock_;
  KnownDate knownBirthday_;
  KnownDate knownTakeDate_;
  std::vector<DefaultTaken> defaults_;
  platform::DateTime birthday_;
  platform::DateTime taken_;
};

/// True for the records that may become a row: the type begins with an X.
[[nodiscard]] bool IsExposure(const CToken& token);

/// The message that names the patient and the default.
[[nodiscard]] std::string TextOf(const core::TextLookup& texts, const CToken& token,
                                 const DefaultTaken& taken);

}  // namespace varnlog::intake
