#include "statistics/StatisticsPages.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "logview/Columns.h"

namespace varnlog::statistics {

using charts::Chart;
using charts::Page;
using charts::Value;
using core::TextKey;
using namespace core::literals;
using logview::Retakes;

namespace {

constexpr double kPercent = 100;
constexpr std::size_t kPersonsShown = 15;  // in the chart; the table has all

Value Number(std::int64_t count) {
  return {.number = static_cast<double>(count)};
}

double Share(std::int64_t part, std::int64_t all) {
  return all == 0 ? 0 : kPercent * static_cast<double>(part) / static_cast<double>(all);
}

std::string TwoDigits(int number) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%02d", number);
  return text.data();
}

std::string MonthText(const Month& month) {
  return std::to_string(month.year) + "-" + TwoDigits(month.month);
}

/// Makes the pages with the texts of one language.
class Pages {
 public:
  Pages(const Statistics& statistics, const ReadLevels& levels, const core::TextLookup& texts,
        const platform::ShortDate& shortDate)
      : statistics_(statistics), levels_(levels), texts_(texts), shortDate_(shortDate) {
    for (const auto& [type, dose] : statistics.types) types_.push_back(type);
  }

  [[nodiscard]] Page Months() const {
    Page page = Named("ST_MONTHS"_key, "ST_MONTHS_TITLE"_key);
    page.note = Undated();
    page.chart = {.kind = Chart::Kind::kStackedBars, .unit = Text("ST_EXPOSURES"_key), .wholeNumbers = true};
    page.table.headings = {Text("ST_MONTH"_key), Text("ST_EXPOSURES"_key)};
    for (const std::string& type : types_) {
      page.chart.series.push_back({TypeText(type), {}});
      page.table.headings.push_back(TypeText(type));
    }
    // Months without exposures are shown, too.
    for (const Month& month : AllMonths()) {
      const auto found = statistics_.months.find(month);
      const Part part = found == statistics_.months.end() ? Part() : found->second;
      page.chart.categories.push_back(MonthText(month));
      std::vector<Value> row = {{.text = MonthText(month)}, Number(part.counted.exposures)};
      for (std::size_t i = 0; i < types_.size(); ++i) {
        const auto count = part.byType.find(types_[i]);
        row.push_back(Number(count == part.byType.end() ? 0 : count->second));
        page.chart.series[i].values.push_back(*row.back().number);
      }
      page.table.rows.push_back(std::move(row));
    }
    return page;
  }

  [[nodiscard]] Page RetakesByMonth() const {
    Page page = RetakePage("ST_RETAKES"_key, "ST_RETAKES_TITLE"_key, "ST_MONTH"_key);
    page.note = Undated();
    for (const Month& month : AllMonths()) {
      const auto found = statistics_.months.find(month);
      const bool known = found != statistics_.months.end();
      AddRetakes(page, MonthText(month), known ? found->second.counted : Retakes(), true);
    }
    return page;
  }

  [[nodiscard]] Page RetakesByPerson() const {
    Page page = RetakePage("ST_PERSONS"_key, "ST_PERSONS_TITLE"_key, "RS_PERSCHARGE"_key);
    std::vector<std::pair<std::string, Retakes>> persons(statistics_.persons.begin(),
                                                         statistics_.persons.end());
    std::ranges::stable_sort(
        persons, [](const auto& a, const auto& b) { return a.second.exposures > b.second.exposures; });
    for (std::size_t i = 0; i < persons.size(); ++i) {
      const std::string& name = persons[i].first;
      AddRetakes(page, name.empty() ? Text("ST_NOPERSON"_key) : name, persons[i].second, i < kPersonsShown);
    }
    return page;
  }

  [[nodiscard]] Page Dose() const {
    Page page = Named("ST_DOSE"_key, "ST_DOSE_TITLE"_key);
    page.chart = {.kind = Chart::Kind::kBoxes,
                  .unit = "mGycm2",
                  .boxName = Text("ST_BOX"_key),
                  .pointsName = Text("ST_LATEST"_key)};
    page.table.headings = {Text("RS_TYPE"_key),      Text("ST_EXPOSURES"_key), Text("ST_VALUES"_key),
                           Text("ST_UNREAD"_key),    Text("ST_EMPTY"_key),     Text("ST_LOWER"_key),
                           Text("ST_MEDIAN"_key),    Text("ST_UPPER"_key),     Text("ST_SUM"_key),
                           Text("ST_REFERENCE"_key), Text("ST_SINCE"_key),     Text("ST_SOURCE"_key)};
    for (const auto& [type, dose] : statistics_.types) AddDose(page, type, dose);
    if (!levels_.badLines.empty()) {
      page.note = core::FilledText(texts_, "ST_BADLEVELS"_key,
                                   {{"strFile", std::string(kReferenceLevels)},
                                    {"strLine", std::to_string(levels_.badLines.front())}});
    }
    return page;
  }

  [[nodiscard]] Page Hours() const {
    Page page = CountPage("ST_HOURS"_key, "ST_HOURS_TITLE"_key, "ST_HOUR"_key);
    for (std::size_t i = 0; i < statistics_.hours.size(); ++i)
      AddCount(page, TwoDigits(static_cast<int>(i)), statistics_.hours[i]);
    return page;
  }

  [[nodiscard]] Page Weekdays() const {
    constexpr std::array<TextKey, 7> kDays = {"ST_MONDAY"_key,   "ST_TUESDAY"_key, "ST_WEDNESDAY"_key,
                                              "ST_THURSDAY"_key, "ST_FRIDAY"_key,  "ST_SATURDAY"_key,
                                              "ST_SUNDAY"_key};
    Page page = CountPage("ST_WEEKDAYS"_key, "ST_WEEKDAYS_TITLE"_key, "ST_WEEKDAY"_key);
    for (std::size_t i = 0; i < kDays.size(); ++i) AddCount(page, Text(kDays[i]), statistics_.weekdays[i]);
    return page;
  }

 private:
  [[nodiscard]] std::string Text(TextKey key) const { return texts_.GetText(key); }

  [[nodiscard]] Page Named(TextKey name, TextKey title) const {
    Page page;
    page.name = Text(name);
    page.title = Text(title);
    return page;
  }

  [[nodiscard]] std::string TypeText(const std::string& type) const {
    if (type.empty()) return Text("ST_NOTYPE"_key);
    const std::string name = logview::TypeName(type, texts_);
    return name.empty() ? type : name;
  }

  [[nodiscard]] std::string Undated() const {
    if (statistics_.undated == 0) return {};
    return core::FilledText(texts_, "ST_UNDATED"_key, {{"lngCount", std::to_string(statistics_.undated)}});
  }

  /// From the first to the last that has exposures; only those where a single stray one lies far away.
  [[nodiscard]] std::vector<Month> AllMonths() const {
    constexpr int kMonthsAYear = 12;
    constexpr int kMost = 600;
    std::vector<Month> months;
    if (statistics_.months.empty()) return months;
    const auto number = [](const Month& month) { return month.year * kMonthsAYear + month.month - 1; };
    const int first = number(statistics_.months.begin()->first);
    const int last = number(statistics_.months.rbegin()->first);
    if (last - first >= kMost) {
      for (const auto& [month, part] : statistics_.months) months.push_back(month);
      return months;
    }
    for (int i = first; i <= last; ++i) months.push_back({i / kMonthsAYear, i % kMonthsAYear + 1});
    return months;
  }

  [[nodiscard]] Page RetakePage(TextKey name, TextKey title, TextKey heading) const {
    Page page = Named(name, title);
    page.chart = {.kind = Chart::Kind::kGroupedBars,
                  .unit = "%",
                  .series = {{Text("ST_REPEATS"_key), {}}, {Text("ST_NOTDIAG"_key), {}}}};
    page.table.headings = {Text(heading),          Text("ST_EXPOSURES"_key),
                           Text("ST_REPEATS"_key), Text("ST_REPEATS"_key) + " %",
                           Text("ST_NOTDIAG"_key), Text("ST_NOTDIAG"_key) + " %"};
    return page;
  }

  static void AddRetakes(Page& page, const std::string& name, const Retakes& counted, bool inChart) {
    const double repeats = Share(counted.repeats, counted.exposures);
    const double notDiagnostic = Share(counted.notDiagnostic, counted.exposures);
    page.table.rows.push_back({{.text = name},
                               Number(counted.exposures),
                               Number(counted.repeats),
                               {.number = repeats, .decimals = 1},
                               Number(counted.notDiagnostic),
                               {.number = notDiagnostic, .decimals = 1}});
    if (!inChart) return;
    page.chart.categories.push_back(name);
    page.chart.series[0].values.push_back(repeats);
    page.chart.series[1].values.push_back(notDiagnostic);
  }

  void AddDose(Page& page, const std::string& type, const DoseOfType& dose) const {
    const auto spread = dose.doses.Spread();
    const int decimals = dose.doses.Decimals();
    const auto number = [decimals](std::optional<double> value) {
      return value ? Value{.number = value, .decimals = decimals} : Value{};
    };
    const auto level = levels_.levels.find(type);
    const bool hasLevel = level != levels_.levels.end();
    const auto& doses = dose.doses;
    std::vector<Value> row = {{.text = TypeText(type)},
                              Number(doses.Values() + doses.Unread() + doses.Empty()),
                              Number(doses.Values()),
                              Number(doses.Unread()),
                              Number(doses.Empty())};
    row.push_back(number(spread ? std::optional(spread->lower) : std::nullopt));
    row.push_back(number(spread ? std::optional(spread->median) : std::nullopt));
    row.push_back(number(spread ? std::optional(spread->upper) : std::nullopt));
    row.push_back(number(spread ? std::optional(doses.Sum()) : std::nullopt));
    row.push_back(number(hasLevel ? std::optional(level->second.dose) : std::nullopt));
    row.push_back({.text = hasLevel ? shortDate_.Format(level->second.since) : std::string()});
    row.push_back({.text = hasLevel ? level->second.source : std::string()});
    page.table.rows.push_back(std::move(row));
    // Their names are too long to stand side by side.
    page.chart.categories.push_back(type.empty() ? TypeText(type) : type);
    std::optional<charts::Box> box;
    if (spread) box = charts::Box{spread->lower, spread->median, spread->upper, dose.latest, {}};
    if (box && hasLevel) box->reference = level->second.dose;
    if (hasLevel) page.chart.referenceName = Text("ST_REFERENCE"_key);
    page.chart.boxes.push_back(std::move(box));
  }

  [[nodiscard]] Page CountPage(TextKey name, TextKey title, TextKey heading) const {
    Page page = Named(name, title);
    page.note = Undated();
    page.chart = {.kind = Chart::Kind::kStackedBars,
                  .unit = Text("ST_EXPOSURES"_key),
                  .wholeNumbers = true,
                  .series = {{{}, {}}}};
    page.table.headings = {Text(heading), Text("ST_EXPOSURES"_key)};
    return page;
  }

  static void AddCount(Page& page, const std::string& name, std::int64_t count) {
    page.chart.categories.push_back(name);
    page.chart.series[0].values.push_back(static_cast<double>(count));
    page.table.rows.push_back({{.text = name}, Number(count)});
  }

  const Statistics& statistics_;
  const ReadLevels& levels_;
  const core::TextLookup& texts_;
  const platform::ShortDate& shortDate_;
  std::vector<std::string> types_;
};

}  // namespace

std::vector<Page> MakePages(const Statistics& statistics, const ReadLevels& levels,
                            const core::TextLookup& texts, const platform::ShortDate& shortDate) {
  const Pages pages(statistics, levels, texts, shortDate);
  return {pages.Months(), pages.RetakesByMonth(), pages.RetakesByPerson(),
          pages.Dose(),   pages.Hours(),          pages.Weekdays()};
}

std::string SummaryText(const Statistics& statistics, const core::TextLookup& texts) {
  return core::FilledText(texts, "ST_SUMMARY"_key,
                          {{"lngCount", std::to_string(statistics.all.exposures)},
                           {"lngRepeats", std::to_string(statistics.all.repeats)},
                           {"lngNotDiag", std::to_string(statistics.all.notDiagnostic)},
                           {"lngPast", std::to_string(statistics.pastRetention)}});
}

}  // namespace varnlog::statistics
