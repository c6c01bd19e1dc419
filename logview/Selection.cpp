#include "logview/Selection.h"

#include <array>

#include "db/modCommon.h"
#include "logview/Columns.h"

namespace varnlog::logview {

namespace {

using core::Selection;
using core::TextKey;
using platform::ShortDate;
using namespace core::literals;

enum class Where { kNothing, kPeriod, kPatient, kPatientPeriod, kPeriodAndType };

struct SelectionRule {
  TextKey headline;
  std::string_view icon;
  Where where;
  std::string_view type;  // exposure type of kPeriodAndType
};

/// In the order of SelectionKind.
constexpr std::array<SelectionRule, 9> kRules = {{
    {"RS_ALLPATIENTIMG"_key, "DateAll", Where::kNothing, ""},
    {"RS_PERIOD"_key, "DateAll", Where::kPeriod, ""},
    {"RS_XRPROOF"_key, "PatAll", Where::kPatient, ""},
    {"RS_XRPROOFPERIOD"_key, "PatPeriod", Where::kPatientPeriod, ""},
    {"RS_PERIODIO"_key, "DateAll", Where::kPeriodAndType, "XI"},
    {"RS_PERIODPAN"_key, "DateAll", Where::kPeriodAndType, "XP"},
    {"RS_PERIODCEPH"_key, "DateAll", Where::kPeriodAndType, "XC"},
    {"RS_PERIODTSA"_key, "DateAll", Where::kPeriodAndType, "XS"},
    {"RS_PERIODXV"_key, "DateAll", Where::kPeriodAndType, "XV"},
}};

constexpr std::string_view kAllRows = "SELECT TXray.* From TXray ";
constexpr std::string_view kNewestFirst = "ORDER BY TXray.tXrayTs DESC;";
constexpr std::string_view kPatientOrder =
    "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayTs DESC;";

/// The bounds joined by `conjunction`; the upper one reaches to the end of its day.
std::string Between(const Selection& selection, std::string_view conjunction) {
  std::string upper = db::SqlDateLiteral(selection.dEndGl);
  upper.pop_back();
  return "Between " + db::SqlDateLiteral(selection.dBegGl) + std::string(conjunction) + upper +
         " 11:59:59 PM#";
}

std::string PatientIs(const Selection& selection) {
  return "(TXray.tXraySName)='" + selection.strPatNameGl + "') AND ((TXray.tXraySFirstname)='" +
         selection.strPatFirstnameGl +
         "') AND ((TXray.tXrayDBirthday)=" + db::SqlDateLiteral(selection.dPatBirthdayGl) + "))) ";
}

std::string Sql(const SelectionRule& rule, const Selection& selection) {
  const std::string all(kAllRows);
  const std::string newestFirst(kNewestFirst);
  const std::string inPeriod = all + "WHERE (((TXray.tXrayTs) ";
  switch (rule.where) {
    case Where::kNothing:
      break;
    case Where::kPeriod:
      return inPeriod + Between(selection, " And ") + ")) " + newestFirst;
    case Where::kPatient:
      return all + "WHERE (((" + PatientIs(selection) + std::string(kPatientOrder);
    case Where::kPatientPeriod:
      return inPeriod + Between(selection, " And ") + " AND (" + PatientIs(selection) + newestFirst;
    case Where::kPeriodAndType:
      return inPeriod + Between(selection, " AND ") + ") AND TXray.tXraySType = '" + std::string(rule.type) +
             "') " + newestFirst;
  }
  return all + newestFirst;
}

std::string Headline(const SelectionRule& rule, const Selection& selection, const core::TextLookup& texts,
                     const ShortDate& shortDate) {
  core::Placeholders values;
  if (rule.where == Where::kPatient || rule.where == Where::kPatientPeriod) {
    values.push_back({"strPatName", FormatPatient(selection.strPatNameGl, selection.strPatFirstnameGl,
                                                  selection.dPatBirthdayGl, shortDate)});
  }
  if (rule.where != Where::kNothing && rule.where != Where::kPatient) {
    values.push_back({"dBegGl", shortDate.Format(selection.dBegGl)});
    values.push_back({"dEndGl", shortDate.Format(selection.dEndGl)});
  }
  return core::FilledText(texts, rule.headline, values);
}

}  // namespace

SelectionView BuildSelection(const Selection& selection, const core::TextLookup& texts,
                             const ShortDate& shortDate) {
  const auto kind = static_cast<std::size_t>(selection.SortSelectionGl);
  if (kind >= kRules.size()) return {.sql = "TXray", .headline = {}, .icon = {}};
  const SelectionRule& rule = kRules[kind];
  return {.sql = Sql(rule, selection),
          .headline = Headline(rule, selection, texts, shortDate),
          .icon = std::string(rule.icon)};
}

std::string SortByColumn(std::string_view sql, int column) {
  if (column < 0 || column >= kColumnCount) return std::string(sql);
  const Column& clicked = kColumns[static_cast<std::size_t>(column)];
  const bool isDescending = sql.find("DESC;") != std::string_view::npos;
  return db::ReplaceSortClause(sql, clicked.SortClause(!isDescending));
}

std::string FormatPatient(std::string_view name, std::string_view firstName, platform::DateTime birth,
                          const ShortDate& shortDate) {
  std::string text;
  text.append(name).append(", ").append(firstName).append(" *").append(shortDate.Format(birth));
  return text;
}

}  // namespace varnlog::logview
