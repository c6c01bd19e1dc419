#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "legacy/LogExamination.h"
#include "legacy/OldLog.h"

namespace varnlog::legacy {

/// The setting of a converted log that keeps the SHA-256 of the old file.
inline constexpr const char* kOriginKey = "JetSHA256";
/// The layout that every converted log has; the two fields that 1.0 lacks are empty in its rows.

/// Takes the rows of an old log into a new one, and compares the two afterwards. A row keeps its id. Rows of
/// a damaged log that have none, or one that was there before, get ids behind all others; a text too long for
/// its field is cut. In a sound log there is neither.
///
/// Both functions throw dao::EngineError and return false when `progress` stopped them.
class LogCopy {
 public:
  /// `source` must outlive the copy; `origin` is the SHA-256 of its file.
  LogCopy(const OldLog& source, std::string origin);

  /// Fills `target`, a log made from the template, in the workspace's open transaction.
  [[nodiscard]] bool Fill(dao::Database& target, const RowProgress& progress);

  /// Compares every value of `reread`, the same old file read again, with `target`. What differs stands in
  /// Difference().
  [[nodiscard]] bool Compare(const OldLog& reread, dao::Database& target, const RowProgress& progress);

  [[nodiscard]] std::int64_t Rows() const { return rows_; }
  [[nodiscard]] std::int64_t ComparedValues() const { return compared_; }
  /// The first difference, for technicians; empty when there is none.
  [[nodiscard]] const std::string& Difference() const { return difference_; }

 private:
  using Row = std::vector<Value>;
  using Setting = std::pair<Value, Value>;
  [[nodiscard]] std::vector<Setting> Settings(const OldLog& source) const;
  void FillSettings(dao::Database& target);
  void CompareSettings(const OldLog& reread, dao::Database& target);
  void AddHomeless(const OldLog& source, class LogRows& rows);
  [[nodiscard]] std::int64_t IdOf(std::int64_t ordinal, const JetRow& row) const;
  void Differ(std::string what);

  const OldLog& source_;
  std::string origin_;
  std::vector<Setting> templateSettings_;
  std::map<std::int64_t, std::int64_t> newIds_;  // by a row's place in the reading
  std::int64_t highestId_ = 0;
  std::int64_t rows_ = 0;
  std::int64_t compared_ = 0;
  std::string difference_;
};

}  // namespace varnlog::legacy
