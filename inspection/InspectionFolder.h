#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "core/TextLookup.h"
#include "db/dao/DBEngine.h"
#include "intake/CodeMappings.h"
#include "platform/Clock.h"
#include "platform/ShortDate.h"

/// What an inspector gets instead of a visit: one folder, and the same as a ZIP archive, with everything
/// about a period.
namespace varnlog::inspection {

/// For whom it is: the authority, which gets no comments, or the quality body of the profession.
enum class Profile { kAuthority, kQualityBody };

struct InspectionOrder {
  platform::DateTime from;  // first and last day
  platform::DateTime to;
  int patients = 2;  // of whom all exposures are listed, for each type; 0 for none
  Profile profile = Profile::kAuthority;
  bool oldestFirst = false;
  std::filesystem::path parent;  // the folder is made in here
};

/// What it is made of; all of it outlives the call.
struct InspectionContext {
  dao::Database& log;
  const std::string& logFile;  // whoever may read this file may read the others
  const core::TextLookup& texts;
  const intake::ToothScheme& scheme;
  const platform::ShortDate& shortDate;
  const platform::Clock& clock;
  const std::string& site;      // the practice
  const std::string& language;  // as in the settings
  std::string levels;           // the file of reference levels
  char listSeparator = ';';     // of CSV files
};

class InspectionProgress {
 public:
  virtual ~InspectionProgress() = default;
  /// False stops it. `what` has the placeholders lngDone and lngCount.
  [[nodiscard]] virtual bool Working(core::TextKey what, std::int64_t done, std::int64_t all) = 0;
};

struct InspectionMade {
  std::filesystem::path folder;
  std::filesystem::path archive;
  std::int64_t exposures = 0;
};

/// A file could not be written; nothing was made.
class InspectionError : public std::runtime_error {
 public:
  InspectionError(std::string file, const std::string& reason)
      : std::runtime_error(reason), file_(std::move(file)) {}
  [[nodiscard]] const std::string& file() const { return file_; }

 private:
  std::string file_;
};

/// Makes both or nothing and never overwrites; nothing when it was stopped. Throws InspectionError,
/// dao::EngineError and what exports and report throw.
[[nodiscard]] std::optional<InspectionMade> MakeInspectionFolder(const InspectionContext& context,
                                                                 const InspectionOrder& order,
                                                                 InspectionProgress& progress);

/// Why it was not made, in the user's words.
[[nodiscard]] std::string InspectionErrorText(const core::TextLookup& texts, const std::exception& error);

}  // namespace varnlog::inspection
