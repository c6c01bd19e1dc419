#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/TableScan.h"
#include "seals/Finding.h"
#include "seals/LineSeal.h"
#include "seals/Verifier.h"

namespace varnlog::seals {

/// The exposures that one seal is about.
struct RowRange {
  std::int64_t seal = 0;
  std::int64_t first = 0;
  std::int64_t last = 0;
  std::int64_t rows = 0;
  std::string digest;
  std::int64_t undoneTo = 0;  // entries up to this number are not undone
};

/// Walks the seals and the history side by side: whether each seal follows from the one before, and the
/// history is the one that was sealed. What the seals say about the exposures is left to RowCheck.
class SealWalk {
 public:
  static constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

  /// From behind the seal number `after` on, which is taken as it is; all when there is none of that number.
  /// The entries of a seal that has more than `mostEntries` are passed over.
  SealWalk(dao::Database& log, std::int64_t after, const Findings& findings, std::int64_t mostEntries = kAll);
  void Run();

  [[nodiscard]] std::int64_t Count() const { return count_; }
  [[nodiscard]] std::int64_t Entries() const { return entries_; }
  [[nodiscard]] const Head& NewestHead() const { return head_; }
  [[nodiscard]] const std::vector<Note>& Notes() const { return notes_; }
  [[nodiscard]] std::vector<RowRange> TakeRanges() { return std::move(ranges_); }

 private:
  struct Entry {
    std::int64_t number = 0;
    std::int64_t exposure = 0;
  };
  using Values = std::vector<dao::CellView>;

  void TakeBase(const Values& seal);
  void TakeSeal(const Values& seal);
  void CheckLine(const Values& seal);
  void TakeNotes(const Values& seal);
  void TakeRange(const Values& seal);
  void SkipEntries(std::int64_t last);
  void PassOver(std::int64_t last);
  void CheckEntries(const Values& seal);
  void FindChangedEntry(const Values& seal, LineSeal& lines, const std::vector<Entry>& entries);
  void ReportMissing(std::int64_t from, std::int64_t to);

  dao::Database& log_;
  std::int64_t after_;
  const Findings& findings_;
  std::int64_t mostEntries_;
  std::unique_ptr<dao::TableScan> history_;
  bool hasEntry_ = false;
  std::int64_t lastEntry_ = 0;  // expected up to here by the seals walked so far
  Head head_;
  platform::DateTime time_;
  std::int64_t count_ = 0;
  std::int64_t entries_ = 0;
  std::vector<Note> notes_;
  std::vector<RowRange> ranges_;
};

}  // namespace varnlog::seals
