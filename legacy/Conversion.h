#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "core/TextLookup.h"
#include "core/UserDialog.h"
#include "db/dao/DBEngine.h"
#include "legacy/LogExamination.h"
#include "platform/Author.h"
#include "platform/Clock.h"

namespace varnlog::legacy {

enum class ConversionStep { kReading, kTakingOver, kComparing };

/// What a conversion asks of whoever shows it.
class ConversionView : public core::UserDialog {
 public:
  /// Before each step; `exposures` is 0 while the number is not known yet.
  virtual void Begin(ConversionStep step, std::int64_t exposures) = 0;
  /// Now and then within a step. Events may be handled here; false cancels the conversion.
  [[nodiscard]] virtual bool Advance(std::int64_t exposuresDone) = 0;
};

struct ConversionContext {
  dao::DBEngine& engine;  // its SystemDB knows the account "Admin"
  const core::TextLookup& texts;
  std::filesystem::path templateFile;  // "varnlog.md0", an empty log
  const platform::Author& author;      // who converts
  const platform::Clock& clock;
};

struct ConversionResult {
  enum class Outcome {
    kDone,
    kNotNeeded,  // the file is no Jet database (any more): somebody else has converted it
    kDeclined,   // the user did not want it, or not with rows missing
    kCancelled,
    kFailed,  // `error` says why
  };
  Outcome outcome = Outcome::kFailed;
  LogExamination found;   // what the old file holds
  std::int64_t rows = 0;  // taken over
  std::int64_t comparedValues = 0;
  std::filesystem::path keptFile;      // the old file
  std::filesystem::path replacedFile;  // where a log that was replaced is kept; empty when none was
  std::string origin;                  // its SHA-256
  std::string error;                   // as it was shown
};

/// What to do with a damaged log.
enum class DamagedLog { kAsk, kTakeReadable, kRefuse };

struct ConversionChoices {
  DamagedLog damaged = DamagedLog::kRefuse;
  bool overwrite = false;  // a new log of that name may be there and is replaced
};

/// Converts an old log in its place: asks, builds the new log beside it, compares every value with the old
/// file read again, and only then lets the files change places. The old one stays as NAME.jet.mdb, its bytes
/// untouched. Whatever fails or is cancelled, and wherever the power goes, the old file is there and the next
/// try succeeds. Everything is shown through `view` in the configured language.
///
/// The log must not be open in this program.
[[nodiscard]] ConversionResult ConvertInPlace(const ConversionContext& context,
                                              const std::filesystem::path& log, ConversionView& view);

/// The same into a file of another name, without asking; failures are shown, and what is missing. The old
/// file is only read; `newLog` may not be another name for it.
[[nodiscard]] ConversionResult ConvertTo(const ConversionContext& context,
                                         const std::filesystem::path& oldLog,
                                         const std::filesystem::path& newLog,
                                         const ConversionChoices& choices, ConversionView& view);

}  // namespace varnlog::legacy
