#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace varnlog::seals {

/// What is wrong with a log. `number` and `other` of a Finding are those named here.
enum class Fault {
  kNoSeals,           // the log has no seals at all
  kRulesChanged,      // somebody removed or changed the rules by which the log refuses changes
  kExposureChanged,   // exposure
  kValueChanged,      // exposure, the entry that should be its last; `field` was changed without a record
  kExposureDeleted,   // exposure
  kExposureInserted,  // exposure
  kExposuresSwapped,  // exposure, exposure
  kExposureUnsealed,  // exposure; added by a program that does not seal, or inserted
  kEntryChanged,      // entry, exposure
  kEntryDeleted,      // entry
  kEntryUnsealed,     // entry, exposure
  kEntryForbidden,    // entry, exposure; no program is allowed to make this change
  kSealChanged,       // seal
  kSealDeleted,       // seal
  kSealRows,          // seal; the exposures of it do not fit, which of them cannot be told
  kSealEntries,       // seal; the same for its entries
  kAnchorMissing,     // seal; the log no longer holds that state
};

struct Finding {
  Fault fault = Fault::kNoSeals;
  std::int64_t number = 0;
  std::int64_t other = 0;
  std::string field;
  friend bool operator==(const Finding&, const Finding&) = default;
};

/// Takes findings as they are made.
class Findings {
 public:
  explicit Findings(std::function<void(Finding)> add) : add_(std::move(add)) {}
  void Add(Finding finding) const { add_(std::move(finding)); }

 private:
  std::function<void(Finding)> add_;
};

/// Hears how far a long operation is, in exposures; false stops it.
using Progress = std::function<bool(std::int64_t done, std::int64_t all)>;

}  // namespace varnlog::seals
