#include "report/dsrResults.h"

#include "platform/Ascii.h"
#include "report/Formula.h"
#include "report/ReportDesign.h"

namespace varnlog::report {

using core::TextKey;
using core::literals::operator""_key;
using Order = platform::ShortDate::Order;

namespace {

/// Text objects beside the headings of the columns.
struct Heading {
  std::string_view object;
  TextKey key;
};

constexpr Heading kHeadings[] = {
    {"txtEmpty", "DRS_EMPTY"_key},
    {"txtCount", "DRS_COUNT"_key},
    {"txtProduct", "DRS_PRODUCT"_key},
};

/// The first character of a formatted date that is no digit, unless it is a letter.
char Separator(std::string_view formatted) {
  for (const char c : formatted) {
    if (platform::ascii::IsDigit(c)) continue;
    return platform::ascii::IsLetter(c) ? '/' : c;
  }
  return '/';
}

const std::string* Find(const std::vector<NamedText>& texts, std::string_view name) {
  for (const NamedText& text : texts) {
    if (text.name == name) return &text.text;
  }
  return nullptr;
}

std::string NameFormula(const DateOrder& order) {
  std::string formula = R"({dao.tXraySName} + ", " + {dao.tXraySFirstname})";
  const std::string picture = BirthDatePicture(order);
  if (picture.empty()) return formula;
  return formula + R"( + " *" + ToText({dao.tXrayDBirthday}, ")" + picture + "\")";
}

}  // namespace

DateOrder ReadDateOrder(std::string_view today, std::string_view secondOfMarch1999) {
  DateOrder result;
  result.separator = Separator(today);
  if (secondOfMarch1999.find("1999") != std::string_view::npos) result.year = "yyyy";
  const std::size_t year = secondOfMarch1999.find("99");
  const std::size_t month = secondOfMarch1999.find('3');
  const std::size_t day = secondOfMarch1999.find('2');
  constexpr std::size_t kMissing = std::string_view::npos;
  if (year == kMissing || month == kMissing || day == kMissing) return result;
  if (year < month && year < day) {
    result.order = Order::kYearMonthDay;
  } else if (day < month && day < year) {
    result.order = Order::kDayMonthYear;
  } else {
    result.order = Order::kMonthDayYear;
  }
  return result;
}

std::string BirthDatePicture(const DateOrder& order) {
  if (!order.order) return {};
  const std::string separator(1, order.separator);
  switch (*order.order) {
    case Order::kYearMonthDay:
      return order.year + separator + "M" + separator + "d";
    case Order::kDayMonthYear:
      return "d" + separator + "M" + separator + order.year;
    case Order::kMonthDayYear:
      return "M" + separator + "d" + separator + order.year;
  }
  return {};
}

dsrResults::dsrResults(const core::TextLookup& texts, const std::string& site, platform::DateTime today,
                       const platform::ShortDate& shortDate)
    : printDate_(today), captions_{{"fldTitle", {}}, {"txtPraxis", site}} {
  for (const ReportColumn& column : ReportColumns()) {
    if (column.key) captions_.push_back({column.heading, texts.GetText(*column.key)});
  }
  for (const Heading& heading : kHeadings) captions_.push_back({heading.object, texts.GetText(heading.key)});

  // A quote inside a text of the language database must not end the constant it stands in.
  const auto text = [&texts](TextKey key) { return FormulaQuoted(texts.GetText(key)); };
  const DateOrder order =
      ReadDateOrder(shortDate.Format(today), shortDate.Format(platform::DateTime::FromSerial(1999, 3, 2)));
  formulas_ = {
      {"pregnancy", "if {dao.tXraySPreg}=\"J\" then \"" + text("RC_PREGYES"_key) +
                        "\" else if {dao.tXraySPreg}=\"N\" then \"" + text("RC_PREGNO"_key) + "\" else \"" +
                        text("RC_PREGUNKNOWN"_key) + "\""},
      {"diagRetry", "if {dao.tXraySDiagRetry}=\"N.d.\" then \"" + text("RC_ND"_key) +
                        "\" else if {dao.tXraySDiagRetry}=\"Wdh.\" then \"" + text("RC_REPEAT"_key) +
                        "\" else {dao.tXraySDiagRetry}"},
      {"printed", "\"" + text("DRS_PRINTED"_key) + " " + shortDate.Format(today) + "\""},
      {"pages", "\"" + text("DRS_PAGE"_key) + " \" + ToText(pageNumber, 0) + \" " + text("DRS_FROM"_key) +
                    " \" + ToText(TotalPageCount, 0)"},
      {"Name", NameFormula(order)},
  };
}

void dsrResults::SetTitle(std::string_view headline) {
  captions_.front().text = headline;
}

void dsrResults::SetLogState(const core::TextLookup& texts, const LogState& state) {
  symbol_ = MakeQrCode(state.anchor);
  captions_.push_back({"txtLogState", core::FilledText(texts, "DRS_LOGSTATE"_key,
                                                       {{"lngCount", std::to_string(state.exposures)}})});
  captions_.push_back({"txtAnchor", state.anchor});
  captions_.push_back({"txtAnchorHelp", texts.GetText("DRS_ANCHORHELP"_key)});
}

const std::string* dsrResults::Caption(std::string_view object) const {
  return Find(captions_, object);
}

const std::string* dsrResults::FormulaText(std::string_view field) const {
  return Find(formulas_, field);
}

}  // namespace varnlog::report
