#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/ValueIndex.h"
#include "intake/CodeMappings.h"
#include "platform/ShortDate.h"

namespace varnlog::logview {

/// What is being looked for: words, each of which has to stand somewhere in the row.
struct FindQuery {
  std::string text;
  bool accentsMatter = true;
  [[nodiscard]] bool IsEmpty() const { return text.find_first_not_of(' ') == std::string::npos; }
  friend bool operator==(const FindQuery&, const FindQuery&) = default;
};

/// Finds rows of a log by what the view shows of patient, region, person responsible and comment. Letter case
/// does not count, accents as the query says; a word may stand anywhere within another one.
class RowFinder {
 public:
  /// Refers to `log` and the scheme.
  RowFinder(dao::Database& log, const intake::ToothScheme& scheme, const platform::ShortDate& shortDate);

  /// Reads about as many further rows of the log, the newest first; true when there are none left. Throws
  /// dao::EngineError.
  bool Read(std::int64_t rows) { return index_->Read(rows); }
  [[nodiscard]] bool IsComplete() const { return index_->IsComplete(); }
  [[nodiscard]] bool IsCurrent() const { return index_->IsCurrent(); }

  /// Those of the rows read so far that the query finds.
  [[nodiscard]] dao::IdSet Find(const FindQuery& query);

 private:
  void FormNewValues(bool accentsMatter);
  [[nodiscard]] std::string Shown(std::size_t column, std::string_view value) const;

  std::unique_ptr<dao::ValueIndex> index_;
  const intake::ToothScheme& scheme_;
  platform::ShortDate shortDate_;
  bool accentsMatter_ = true;
  std::vector<std::vector<std::string>> forms_;  // of each column's values, as they are compared
};

}  // namespace varnlog::logview
