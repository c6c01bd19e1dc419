#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/TextLookup.h"
#include "intake/CodeMappings.h"
#include "platform/ShortDate.h"
#include "seals/History.h"

namespace varnlog::logview {

/// One entry of an exposure's history as it is shown.
struct HistoryLine {
  std::string when;
  std::string who;
  std::string where;
  std::string what;
  std::string before;
  std::string after;
};

/// The column that shows a field of the log, or the state that its flag stands for; nothing for a field that
/// is not shown.
[[nodiscard]] std::optional<int> ColumnOf(std::string_view field);

/// Puts the history of exposures into the user's words.
class HistoryText {
 public:
  /// All three outlive it.
  HistoryText(const core::TextLookup& texts, const intake::ToothScheme& scheme,
              const platform::ShortDate& shortDate)
      : texts_(texts), scheme_(scheme), shortDate_(shortDate) {}

  /// `type` is the exposure's type, by which its region is shown.
  [[nodiscard]] HistoryLine Line(const seals::HistoryEntry& entry, std::string_view type) const;
  /// What was done, when, by whom and where, in one line.
  [[nodiscard]] std::string Note(const seals::HistoryEntry& entry) const;
  /// The same with the values.
  [[nodiscard]] std::string NoteWithValues(const seals::HistoryEntry& entry, std::string_view type) const;

 private:
  [[nodiscard]] std::string What(const seals::HistoryEntry& entry) const;
  [[nodiscard]] std::string When(const seals::Origin& origin) const;
  [[nodiscard]] std::string Value(const seals::HistoryEntry& entry, const std::optional<std::string>& value,
                                  std::string_view type) const;

  const core::TextLookup& texts_;
  const intake::ToothScheme& scheme_;
  const platform::ShortDate& shortDate_;
};

}  // namespace varnlog::logview
