#pragma once

#include <stdexcept>
#include <string>

namespace varnlog::dao {

/// The engine's error numbers (DAO's). Callers compare them; people read the text.
enum class ErrorNumber : int {
  kNone = 0,
  kUpdateWithoutEdit = 3020,
  kNoCurrentRecord = 3021,
  kDuplicateKey = 3022,
  kFileNotFound = 3024,
  kNotEnoughDiskSpace = 3026,
  kReadOnlyDatabase = 3027,
  kWorkgroupFileMissing = 3028,
  kBadAccount = 3029,
  kNoPermission = 3033,
  kInvalidTransaction = 3034,
  kFileReplaced = 3043,  // the open file is no longer what stands under its name
  kInvalidPath = 3044,
  kFileInUse = 3045,
  kDamaged = 3049,
  kCannotOpen = 3051,
  kDiskError = 3056,
  kCancelled = 3059,
  kTooFewParameters = 3061,
  kSyntaxError = 3075,
  kTableNotFound = 3078,
  kObjectNotFound = 3011,
  kConnectionLost = 3146,  // the server stopped answering; an open transaction is undone
  kServerUnreachable = 3151,
  kServerDatabaseMissing = 3152,
  kServerNotTrusted = 3153,      // no protected connection: its certificate does not fit, or it has none
  kServerLibraryMissing = 3154,  // of this workstation
  kOutcomeUnknown = 3155,        // the server stopped answering while it committed
  kTooLongForField = 3163,
  kRecordDeleted = 3167,
  kDataChanged = 3197,
  kFileExists = 3204,
  kServersOwn = 3219,  // upkeep that a server sees to itself
  kNotSupported = 3251,
  kItemNotFound = 3265,
  kRuleViolated = 3317,  // a value that a rule of the table refuses
  kUnrecognisedFormat = 3343,
  kObjectInvalid = 3420,
  kUnexpected = 3000,
};

/// The one exception of the engine. Nothing else leaves db/dao/, apart from std::bad_alloc.
class EngineError : public std::runtime_error {
 public:
  EngineError(ErrorNumber number, const std::string& text) : std::runtime_error(text), number_(number) {}

  [[nodiscard]] ErrorNumber number() const { return number_; }

 private:
  ErrorNumber number_;
};

}  // namespace varnlog::dao
