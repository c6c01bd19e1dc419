#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/TableScan.h"
#include "seals/Finding.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

/// One row of THistory with its own copy of the texts.
struct Change {
  explicit Change(const std::vector<dao::CellView>& row);

  std::int64_t number = 0;
  std::int64_t exposure = 0;
  std::string field;
  std::string kind;
  [[nodiscard]] dao::CellView Before() const { return View(beforeKind_, before_); }
  [[nodiscard]] dao::CellView After() const { return View(afterKind_, after_); }

 private:
  [[nodiscard]] static dao::CellView View(dao::CellKind kind, const std::string& text) {
    return {.kind = kind, .integer = 0, .real = 0, .text = text};
  }
  dao::CellKind beforeKind_;
  dao::CellKind afterKind_;
  std::string before_;
  std::string after_;
};

/// Walks exposures and their changes side by side, both in the order of the exposures' numbers.
class ChangeWalk {
 public:
  ChangeWalk(dao::Database& log, std::int64_t firstExposure);

  /// The changes of the exposure, the oldest first; asked for in rising order. Those of exposures in between,
  /// which are not there, go to `homeless`.
  [[nodiscard]] const std::vector<Change>& Of(std::int64_t exposure,
                                              const std::function<void(std::int64_t)>& homeless);
  /// The rest, when all exposures were walked.
  void Finish(const std::function<void(std::int64_t)>& homeless);

 private:
  void Advance();

  std::unique_ptr<dao::TableScan> scan_;
  bool hasRow_ = false;
  std::vector<Change> changes_;
};

/// Takes an exposure's values back to what they were when it was added. Says what does not fit on the way: a
/// value that is not the last one that was written, a change that no program was allowed to make.
void Undo(std::vector<dao::CellView>& values, std::span<const Change> changes, const Findings& findings);

/// Those behind the entry of that number.
[[nodiscard]] std::span<const Change> Behind(std::span<const Change> changes, std::int64_t entry);

}  // namespace varnlog::seals
