#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "logview/FindRows.h"
#include "logview/IncompleteRows.h"

namespace varnlog::logview {

/// Which of a selection's rows are shown: those that hold what is looked for and, where that is asked for,
/// only those that lack a value. What it has to know of the log for that is read in slices, between which the
/// window answers; until it is known, rows read so far are shown.
class RowFilter {
 public:
  /// All of it outlives the filter.
  RowFilter(const intake::ToothScheme& scheme, const platform::ShortDate& shortDate)
      : scheme_(scheme), shortDate_(shortDate) {}

  void SetQuery(FindQuery query) { query_ = std::move(query); }
  [[nodiscard]] const FindQuery& Query() const { return query_; }
  void SetOnlyIncomplete(bool only) { onlyIncomplete_ = only; }
  [[nodiscard]] bool OnlyIncomplete() const { return onlyIncomplete_; }
  /// Whether rows may be left out.
  [[nodiscard]] bool IsActive() const { return onlyIncomplete_ || !query_.IsEmpty(); }

  /// The rows of `log` may have changed.
  void Renew(const std::shared_ptr<dao::Database>& log);
  /// Lets go of the log.
  void Close();
  /// Reads on; true when nothing is left to be read. Throws dao::EngineError.
  bool Read(std::int64_t rows);
  /// Everything is known that decides what is shown.
  [[nodiscard]] bool IsComplete() const;

  /// A row was changed by the user; it stays in view all the same.
  void Note(std::int64_t id, bool incomplete) {
    if (incompleteIds_) incompleteIds_->Set(id, incomplete);
  }

  /// The rows of `all` that are to be shown, in their order, as far as they are known.
  [[nodiscard]] std::unique_ptr<dao::Recordset> Shown(const dao::Recordset& all);
  /// How many rows of `all` lack a value; nothing until that is known.
  [[nodiscard]] std::optional<std::int64_t> IncompleteAmong(const dao::Recordset& all);
  /// The next row from `from` on, `step` being 1 or -1, that lacked a value when it was last looked; nothing
  /// when there is none. Reads what is not known yet.
  [[nodiscard]] std::optional<std::int64_t> NextIncomplete(const dao::Recordset& rows, std::int64_t from,
                                                           int step);

 private:
  const intake::ToothScheme& scheme_;
  platform::ShortDate shortDate_;
  FindQuery query_;
  bool onlyIncomplete_ = false;
  std::shared_ptr<dao::Database> log_;
  std::unique_ptr<RowFinder> finder_;  // from the first search on
  std::unique_ptr<IncompleteRows> incomplete_;
  std::optional<dao::IdSet> incompleteIds_;  // when all of them are known
};

}  // namespace varnlog::logview
