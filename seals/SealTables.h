#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/DBEngine.h"
#include "platform/DateTime.h"

namespace varnlog::seals {

/// Why the log was changed: one seal a transaction.
enum class SealKind { kIntake, kEntry, kLock, kConversion, kTakeover, kRepair };
[[nodiscard]] std::string_view NameOf(SealKind kind);

/// What a change of a field is.
enum class ChangeKind { kEntry, kCorrection, kComment, kLock, kSuite, kRepair };
[[nodiscard]] std::string_view NameOf(ChangeKind kind);

/// One row of TSeal without its digest, which follows from it and the one before.
struct Seal {
  std::int64_t number = 0;
  std::string kind;
  platform::DateTime time;  // UTC
  int offsetMinutes = 0;    // local time is UTC plus this
  std::string account;
  std::string fullName;
  std::string place;  // workstation
  std::string program;
  std::string run;
  std::int64_t firstRow = 0;  // exposures added; 0 without any
  std::int64_t lastRow = 0;
  std::int64_t rows = 0;
  std::int64_t firstHistory = 1;  // one above the last without any
  std::int64_t lastHistory = 0;
  std::string exchange;       // SHA-256 of the exchange records, "" without any
  std::string rowDigest;      // "" without any row
  std::string historyDigest;  // "" without any
  std::string marks;
};

/// The newest seal; number 0 and kNoDigest in an empty chain.
struct Head {
  std::int64_t number = 0;
  std::string digest;
  friend bool operator==(const Head&, const Head&) = default;
};
/// Stands before the first seal.
inline constexpr std::string_view kNoDigest =
    "0000000000000000000000000000000000000000000000000000000000000000";

/// The line over which a seal's digest is made.
[[nodiscard]] std::string SealLine(std::string_view previousDigest, const Seal& seal);

/// Fields of the tables in their order; those of TSeal with the digest before the marks.
[[nodiscard]] const std::vector<std::string>& HistoryFields();
[[nodiscard]] const std::vector<std::string>& SealFields();

/// Whether the log has both tables.
[[nodiscard]] bool HasSealTables(const dao::Database& log);
/// Whether anything in the log is sealed: an older log has no tables yet, and an empty one no seal.
[[nodiscard]] bool HasSeals(dao::Database& log);
/// Whether nothing was ever taken into the log: at most it has the seal with which it was begun.
[[nodiscard]] bool IsUnused(dao::Database& log);
/// Makes both tables and the rules, within the caller's transaction.
void MakeSealTables(dao::Database& log);
/// The rules as every log has them.
[[nodiscard]] const std::vector<std::string>& LogRules();

[[nodiscard]] Head ReadHead(dao::Database& log);
/// The newest seal and the last row of the history that is sealed.
struct SealedSoFar {
  Head head;
  std::int64_t lastHistory = 0;
};
[[nodiscard]] SealedSoFar ReadSealed(dao::Database& log);
/// Adds the seal behind `previous`; the result is the new head.
Head WriteSeal(dao::Database& log, std::string_view previousDigest, const Seal& seal);

}  // namespace varnlog::seals
