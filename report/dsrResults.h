#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/TextLookup.h"
#include "platform/DateTime.h"
#include "platform/ShortDate.h"
#include "report/LogState.h"
#include "report/QrCode.h"

namespace varnlog::report {

/// The system's short date taken apart for the report's own date pictures.
struct DateOrder {
  char separator = '/';
  std::string year = "yy";  // "yy" or "yyyy"
  std::optional<platform::ShortDate::Order> order;
};

/// Reads separator, year picture and order out of two dates formatted by the system: `today` in the short
/// form and 2 March 1999 in the short form.
[[nodiscard]] DateOrder ReadDateOrder(std::string_view today, std::string_view secondOfMarch1999);

/// The picture for birth dates, month and day without leading zeros; empty when the order is none of the
/// three.
[[nodiscard]] std::string BirthDatePicture(const DateOrder& order);

/// One text object of the design or one of its formula fields, with the text that the run gives it.
struct NamedText {
  std::string_view name;
  std::string text;
};

/// The report of the log, made ready for one run: headings in the user's language and the texts of its five
/// formula fields. Rows are attached by whoever lays it out.
class dsrResults {
 public:
  /// `site` is the practice's name. Fixes the print date: a report begun before midnight keeps its day.
  dsrResults(const core::TextLookup& texts, const std::string& site, platform::DateTime today,
             const platform::ShortDate& shortDate);

  /// The report's title, from the headline of the selection.
  void SetTitle(std::string_view headline);
  /// "" before SetTitle.
  [[nodiscard]] const std::string& Title() const { return *Caption("fldTitle"); }

  /// The state of the log, for the end of the report.
  void SetLogState(const core::TextLookup& texts, const LogState& state);
  /// Its anchor; none before SetLogState.
  [[nodiscard]] const QrCode& Symbol() const { return symbol_; }

  /// The day that {@printed} names.
  [[nodiscard]] platform::DateTime PrintDate() const { return printDate_; }

  /// The caption of a text object ("txtNr", "txtPraxis", ...); nothing for one that keeps its design text.
  [[nodiscard]] const std::string* Caption(std::string_view object) const;
  /// The text of a formula field ("Name", "pages", "printed", "pregnancy", "diagRetry"); nothing for any
  /// other.
  [[nodiscard]] const std::string* FormulaText(std::string_view field) const;

 private:
  platform::DateTime printDate_;
  std::vector<NamedText> captions_;
  std::vector<NamedText> formulas_;
  QrCode symbol_;
};

}  // namespace varnlog::report
