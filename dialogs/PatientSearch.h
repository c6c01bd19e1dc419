#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Selection.h"
#include "core/TextLookup.h"
#include "db/dao/DBEngine.h"
#include "platform/ShortDate.h"

namespace varnlog::dialogs {

/// What a search found.
struct SearchResult {
  std::vector<std::string> entries;      // "Müller, Hans *12.03.1961", in the order the engine gave them
  std::string searchBox;                 // the first entry up to its " *", when there is one
  std::optional<core::TextKey> message;  // why there is none; its placeholder "txtSearch" is the search text
};

/// What became of OK.
enum class Confirmation {
  kDone,         // the selection holds the patient
  kBeep,         // nothing to search for and nothing chosen
  kSearchAgain,  // nothing chosen: search with what is in the box
  kNotUnique,    // PS_ERR_NOTUNIQUE
  kNotFound,     // the entry names no patient of the log (any more)
};

/// What the patient search decides. Names and search texts go into the SQL as they are, so one with an
/// apostrophe makes it invalid: EngineError leaves Search and Confirm, and the window shows it.
class PatientSearch {
 public:
  PatientSearch(core::Selection& selection, dao::Database& log, const platform::ShortDate& shortDate)
      : selection_(selection), log_(log), shortDate_(shortDate) {}

  /// `text` may hold the engine's wildcards; blanks around it do not matter, nor those around its comma when
  /// nothing is found with them as they are.
  [[nodiscard]] SearchResult Search(std::string_view text);

  /// What is proposed before anything is typed: this patient, "" for none, and those of the latest exposures,
  /// each once.
  [[nodiscard]] std::vector<std::string> Proposals(const std::string& first) const;

  /// OK was pressed with `selected` chosen in the list ("" for none) and `searchText` in the box.
  [[nodiscard]] Confirmation Confirm(std::string_view selected, std::string_view searchText);

 private:
  [[nodiscard]] std::vector<std::string> Entries(std::string_view pattern);

  core::Selection& selection_;
  dao::Database& log_;
  const platform::ShortDate& shortDate_;
};

}  // namespace varnlog::dialogs
