#include "report/ReportDesign.h"

#include <algorithm>
#include <array>
#include <utility>

#include "report/DesignLine.h"

namespace varnlog::report {

namespace {

template <typename Value, std::size_t Count>
using NameTable = std::array<std::pair<std::string_view, Value>, Count>;

constexpr NameTable<Align, 3> kAligns = {
    {{"left", Align::kLeft}, {"centre", Align::kCentre}, {"right", Align::kRight}}};
constexpr NameTable<BandWhen, 3> kWhens = {
    {{"always", BandWhen::kAlways}, {"rows", BandWhen::kRows}, {"empty", BandWhen::kEmpty}}};
constexpr NameTable<SectionKind, kSectionCount> kSections = {{
    {"reportHeader", SectionKind::kReportHeader},
    {"pageHeader", SectionKind::kPageHeader},
    {"dsrDetails", SectionKind::kDetails},
    {"pageFooter", SectionKind::kPageFooter},
    {"reportFooter", SectionKind::kReportFooter},
}};
constexpr NameTable<ObjectDesign::Kind, 5> kObjects = {{
    {"text", ObjectDesign::Kind::kText},
    {"field", ObjectDesign::Kind::kField},
    {"formula-field", ObjectDesign::Kind::kFormula},
    {"number", ObjectDesign::Kind::kNumber},
    {"summary", ObjectDesign::Kind::kSummary},
}};

template <typename Table>
const auto* Find(const Table& table, std::string_view name) {
  const auto found = std::ranges::find(table, name, [](const auto& entry) { return entry.first; });
  return found == table.end() ? nullptr : &found->second;
}

template <typename Table>
auto Choice(const DesignLine& line, std::string_view setting, const Table& table) {
  const std::string name = line.Text(setting);
  if (name.empty()) return table.front().second;
  const auto* value = Find(table, name);
  if (value == nullptr) line.Fail("'" + name + "' is no value of " + std::string(setting));
  return *value;
}

template <typename Item>
int IndexOf(const DesignLine& line, const std::vector<Item>& items, const std::string& name) {
  const auto found = std::ranges::find(items, name, &Item::name);
  if (found == items.end()) line.Fail("'" + name + "' has not been described");
  return static_cast<int>(found - items.begin());
}

std::string WithLineBreaks(std::string caption) {
  std::ranges::replace(caption, '|', '\r');
  return caption;
}

class Reader {
 public:
  void Add(const DesignLine& line) {
    const std::string_view what = line.What();
    if (what == "page") {
      design_.paper = line.Name();
      design_.margin = line.Number("margin");
      design_.padding = line.Number("padding");
    } else if (what == "font") {
      design_.fonts.push_back(
          {line.Name(), line.Text("family"), line.Number("size"), line.Text("bold") == "yes"});
    } else if (what == "column") {
      design_.columns.push_back(
          {line.Name(), line.Number("width"), line.Number("stretch"), Choice(line, "align", kAligns)});
    } else if (what == "formula") {
      design_.formulas.push_back({line.Name(), line.Rest()});
    } else {
      AddToSections(line);
    }
    line.RequireAllUsed();
  }

  ReportDesign Finish() {
    if (design_.fonts.empty() || design_.columns.empty() || design_.Section(SectionKind::kDetails).empty())
      throw DesignError("a font, a column and a detail section are needed");
    return std::move(design_);
  }

 private:
  void AddToSections(const DesignLine& line) {
    if (line.What() == "section") {
      const auto* kind = Find(kSections, line.Name());
      if (kind == nullptr) line.Fail("there is no such section");
      section_ = &design_.sections[static_cast<std::size_t>(*kind)];
    } else if (line.What() == "band") {
      if (section_ == nullptr) line.Fail("a band stands in a section");
      section_->push_back(Band(line));
    } else if (const auto* kind = Find(kObjects, line.What())) {
      if (section_ == nullptr || section_->empty()) line.Fail("an object stands in a band");
      section_->back().objects.push_back(Object(line, *kind));
    } else {
      line.Fail("'" + std::string(line.What()) + "' is not known");
    }
  }

  static BandDesign Band(const DesignLine& line) {
    BandDesign band;
    band.above = line.Number("above");
    band.below = line.Number("below");
    band.ruleAbove = line.Number("ruleAbove");
    band.ruleBelow = line.Number("ruleBelow");
    band.columnRules = line.Number("columnRules");
    band.when = Choice(line, "when", kWhens);
    return band;
  }

  [[nodiscard]] ObjectDesign Object(const DesignLine& line, ObjectDesign::Kind kind) const {
    ObjectDesign object;
    object.kind = kind;
    object.name = line.Name();
    object.value = line.Text("value");
    object.caption = WithLineBreaks(line.Text("caption"));
    object.label = line.Text("label");
    object.align = Choice(line, "align", kAligns);
    if (const std::string column = line.Text("column"); !column.empty()) {
      object.column = IndexOf(line, design_.columns, column);
      object.align = design_.columns[static_cast<std::size_t>(*object.column)].align;
    }
    object.from = line.Number("from", 0);
    object.to = line.Number("to", 100);
    if (const std::string font = line.Text("font"); !font.empty())
      object.font = IndexOf(line, design_.fonts, font);
    object.lines = std::max(1, static_cast<int>(line.Number("lines", 1)));
    if (kind == ObjectDesign::Kind::kFormula) (void)IndexOf(line, design_.formulas, object.value);
    return object;
  }

  ReportDesign design_;
  std::vector<BandDesign>* section_ = nullptr;
};

}  // namespace

ReportDesign ReadReportDesign(std::string_view text) {
  Reader reader;
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const DesignLine line(text.substr(0, end), number);
    if (!line.IsEmpty()) reader.Add(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return reader.Finish();
}

}  // namespace varnlog::report
