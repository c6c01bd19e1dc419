#include "report/ReportDesign.h"

// The printed log, column by column and section by section. Lengths are points.

namespace varnlog::report {

using namespace core::literals;
using enum ObjectDesign::Kind;

namespace {

constexpr const char* kSerif = "Times New Roman, Liberation Serif, Tinos";
enum Font : int { kTextFont, kHeadingFont, kTitleFont, kPracticeFont, kSmallFont };

// In the order of the report, which is not the grid's.
constexpr ReportColumn kColumns[] = {
    // name, width, stretch, align; heading, key, caption; object, kind, value, lines
    {"number", 37, 0, Align::kRight, "txtNr", "RS_NR"_key, "", "RecordNumber", kNumber, "", 1},
    {"date", 79, 0, Align::kLeft, "txtDate", "RS_DATE"_key, "Datum", "txtXRayTS", kField, "tXrayTs", 2},
    {"patient", 148, 3, Align::kLeft, "txtPatient", "RS_PATIENT"_key, "Patient", "txtName", kFormula, "Name",
     6},
    {"pregnancy", 52, 0, Align::kLeft, "txtPregnancy", "DRS_PREGNANCY"_key, "Schw.", "fldPregnancy", kFormula,
     "pregnancy", 2},
    {"person", 82, 2, Align::kLeft, "txtPersCharge", "RS_PERSCHARGE"_key, "Verantwortlicher", "fldDr", kField,
     "tXraySDr", 4},
    {"type", 26, 0, Align::kLeft, "txtType", "RS_TYPE"_key, "", "fldType", kField, "tXraySType", 2},
    {"region", 46, 0, Align::kLeft, "txtRegion", "DRS_REGION"_key, "Zahn/\rProgr.", "fldRegion", kField,
     "tXraySRegio", 4},
    {"ms", 32, 0, Align::kRight, "txtMs", "RS_MS"_key, "", "fldMs", kField, "tXraySRadDur", 3},
    {"kv", 24, 0, Align::kRight, "txtKv", "RS_KV"_key, "", "fldKv", kField, "tXraySVolt", 3},
    {"ma", 24, 0, Align::kRight, "txtMa", "RS_MA"_key, "", "fldMa", kField, "tXraySCur", 3},
    {"notDiag", 50, 0, Align::kLeft, "txtNotDiag", "DRS_NOTDIAG"_key, "N.diagn./\rWdh.", "fldDiagRetry",
     kFormula, "diagRetry", 4},
    {"comment", 126, 5, Align::kLeft, "txtComment", "RS_COMMENT"_key, "Bemerkung", "fldComment", kField,
     "tXraySComment", 32},
    {"dose", 52, 0, Align::kRight, "txtDose", std::nullopt, "mGy * cm 2", "fldDose", kField, "tXraySDose", 6},
};

/// As the report was designed; the program replaces all five when a report is begun.
const std::vector<FormulaDesign> kFormulas = {
    {"Name", R"({dao.tXraySName} +", " + {dao.tXraySFirstname} + " *" + ToText({dao.tXrayDBirthday}))"},
    {"pregnancy",
     R"(if {dao.tXraySPreg}="J" then "Ja" else if {dao.tXraySPreg}="N" then "Nein" else "Unbekannt")"},
    {"diagRetry", R"(if {dao.tXraySDiagRetry}="N. d." then "N.d." else {dao.tXraySDiagRetry})"},
    {"printed", R"("Gedruckt: " + ToText(PrintDate))"},
    {"pages", R"("Seite " + ToText (PageNumber,0) + " von " + ToText (TotalPageCount, 0))"},
};

void AddColumns(ReportDesign& design, BandDesign& headings, BandDesign& line) {
  for (const ReportColumn& column : kColumns) {
    const int index = static_cast<int>(design.columns.size());
    design.columns.push_back({std::string(column.name), column.width, column.stretch, column.align});
    headings.objects.push_back({.name = std::string(column.heading),
                                .caption = std::string(column.caption),
                                .column = index,
                                .font = kHeadingFont,
                                .align = column.align,
                                .lines = 2});
    line.objects.push_back({.kind = column.kind,
                            .name = std::string(column.object),
                            .value = std::string(column.value),
                            .column = index,
                            .align = column.align,
                            .lines = column.lines});
  }
}

const BandDesign kTitleBand = {.below = 6,
                               .objects = {
                                   {.name = "fldTitle", .from = 0, .to = 66, .font = kTitleFont, .lines = 3},
                                   {.name = "txtPraxis",
                                    .caption = "Praxis:",
                                    .from = 68,
                                    .to = 100,
                                    .font = kPracticeFont,
                                    .align = Align::kRight,
                                    .lines = 3},
                               }};

const BandDesign kEntryBand = {
    .above = 0.5,
    .below = 0.5,
    .ruleBelow = 0.2,
    .objects = {
        {.kind = kNumber, .name = "RecordNumber", .column = 0, .font = kSmallFont, .align = Align::kRight},
        {.kind = kField,
         .name = "fldLaterEntry",
         .value = "laterEntry",
         .from = 5.2,
         .font = kSmallFont,
         .lines = 8}}};

const BandDesign kEmptyBand = {
    .above = 16,
    .when = BandWhen::kEmpty,
    .objects = {{.name = "txtEmpty", .font = kPracticeFont, .align = Align::kCentre, .lines = 2}}};

const BandDesign kTotalBand = {.above = 5,
                               .when = BandWhen::kRows,
                               .objects = {{.kind = kSummary,
                                            .name = "sumCount",
                                            .value = "ToText(Count({dao.tXrayTs}), 0)",
                                            .label = "txtCount",
                                            .font = kHeadingFont}}};

/// Two thirds of a millimetre for each of its 25 modules.
constexpr double kSymbolSide = 48;
constexpr double kBesideSymbol = 8.5;  // percent

const BandDesign kAnchorBand = {
    .above = 10,
    .below = 2,
    .when = BandWhen::kSealed,
    .objects = {
        {.kind = kSymbol, .name = "symAnchor", .side = kSymbolSide},
        {.name = "txtLogState", .from = kBesideSymbol, .to = 100, .font = kTextFont, .down = 2},
        {.name = "txtAnchor", .from = kBesideSymbol, .to = 100, .font = kPracticeFont, .down = 14},
        {.name = "txtAnchorHelp",
         .from = kBesideSymbol,
         .to = 100,
         .font = kSmallFont,
         .lines = 2,
         .down = 29},
    }};

const BandDesign kFooterBand = {
    .above = 4,
    .ruleAbove = 0.4,
    .objects = {
        {.kind = kFormula, .name = "fldPrinted", .value = "printed", .from = 0, .to = 33, .font = kSmallFont},
        {.name = "txtProduct", .from = 33, .to = 67, .font = kSmallFont, .align = Align::kCentre},
        {.kind = kFormula,
         .name = "fldPages",
         .value = "pages",
         .from = 67,
         .to = 100,
         .font = kSmallFont,
         .align = Align::kRight},
    }};

}  // namespace

std::span<const ReportColumn> ReportColumns() {
  return kColumns;
}

ReportDesign StoredDesign() {
  ReportDesign design{.paper = "A4",
                      .margin = 32,
                      .padding = 3,
                      .fonts = {{"text", kSerif, 8.5, false},
                                {"heading", kSerif, 8.5, true},
                                {"title", kSerif, 14, true},
                                {"practice", kSerif, 11, false},
                                {"small", kSerif, 8, false}},
                      .formulas = kFormulas};
  BandDesign headings{.above = 2, .below = 2, .ruleAbove = 0.8, .ruleBelow = 0.8, .columnRules = 0.4};
  BandDesign line{.above = 1, .below = 1, .ruleBelow = 0.2, .columnRules = 0.4};
  AddColumns(design, headings, line);
  design.Section(SectionKind::kPageHeader) = {kTitleBand, std::move(headings)};
  design.Section(SectionKind::kDetails) = {std::move(line)};
  design.Section(SectionKind::kEntries) = {kEntryBand};
  design.Section(SectionKind::kReportFooter) = {kEmptyBand, kTotalBand, kAnchorBand};
  design.Section(SectionKind::kPageFooter) = {{.above = 6}, kFooterBand};
  return design;
}

}  // namespace varnlog::report
