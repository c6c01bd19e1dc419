#include "intake/CodeMappings.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/Ascii.h"

namespace varnlog::intake {

using core::operator""_key;

namespace {

struct Code {
  std::string_view stored;
  core::TextKey text;
};

constexpr std::array<Code, 3> kPregnancy = {{
    {"J", "RC_PREGYES"_key},
    {"N", "RC_PREGNO"_key},
    {"-", "RC_PREGUNKNOWN"_key},
}};
constexpr std::array<Code, 2> kRepeat = {{{kRepeatCode, "RC_REPEAT"_key}, {kNotDiagnosticCode, "RC_ND"_key}}};

std::string TextOf(std::string_view code, std::span<const Code> codes, const core::TextLookup& texts) {
  for (const Code& known : codes) {
    if (known.stored == code) return texts.GetText(known.text);
  }
  return {};
}

std::string CodeOf(std::string_view text, std::span<const Code> codes, const core::TextLookup& texts) {
  // A language without these texts answers "" for each: an empty cell must not become the first code.
  if (text.empty()) return {};
  for (const Code& known : codes) {
    if (texts.GetText(known.text) == text) return std::string(known.stored);
  }
  return {};
}

struct Tooth {
  std::string_view fdi;
  std::string_view us;
};

constexpr std::array<Tooth, 52> kTeeth = {{
    {"18", "1"},  {"17", "2"},  {"16", "3"},  {"15", "4"},  {"14", "5"},  {"13", "6"},  {"12", "7"},
    {"11", "8"},  {"21", "9"},  {"22", "10"}, {"23", "11"}, {"24", "12"}, {"25", "13"}, {"26", "14"},
    {"27", "15"}, {"28", "16"}, {"38", "17"}, {"37", "18"}, {"36", "19"}, {"35", "20"}, {"34", "21"},
    {"33", "22"}, {"32", "23"}, {"31", "24"}, {"41", "25"}, {"42", "26"}, {"43", "27"}, {"44", "28"},
    {"45", "29"}, {"46", "30"}, {"47", "31"}, {"48", "32"}, {"55", "A"},  {"54", "B"},  {"53", "C"},
    {"52", "D"},  {"51", "E"},  {"61", "F"},  {"62", "G"},  {"63", "H"},  {"64", "I"},  {"65", "J"},
    {"75", "K"},  {"74", "L"},  {"73", "M"},  {"72", "N"},  {"71", "O"},  {"81", "P"},  {"82", "Q"},
    {"83", "R"},  {"84", "S"},  {"85", "T"},
}};

std::string UpperText(std::string_view text) {
  std::string upper(text);
  std::ranges::transform(upper, upper.begin(), platform::ascii::Upper);
  return upper;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Only these types have a tooth in their region; the others have the name of a program there.
bool ConvertsTeeth(std::string_view exposureType, const ToothScheme& scheme) {
  if (!scheme.SchemeUS()) return false;
  const std::string type = UpperText(exposureType);
  return type == "XI" || type == "XS";
}

}  // namespace

std::string PregnancyCodeToText(std::string_view code, const core::TextLookup& texts) {
  return TextOf(code, kPregnancy, texts);
}

std::string PregnancyTextToCode(std::string_view text, const core::TextLookup& texts) {
  return CodeOf(text, kPregnancy, texts);
}

std::string RepeatCodeToText(std::string_view code, const core::TextLookup& texts) {
  return TextOf(code, kRepeat, texts);
}

std::string RepeatTextToCode(std::string_view text, const core::TextLookup& texts) {
  return CodeOf(text, kRepeat, texts);
}

std::string ToothToDisplay(std::string_view region, std::string_view exposureType,
                           const ToothScheme& scheme) {
  if (!ConvertsTeeth(exposureType, scheme)) return std::string(region);
  const auto* tooth = std::ranges::find(kTeeth, Trimmed(region), &Tooth::fdi);
  return std::string(tooth == kTeeth.end() ? region : tooth->us);
}

std::string ToothFromDisplay(std::string_view shown, std::string_view exposureType,
                             const ToothScheme& scheme) {
  if (!ConvertsTeeth(exposureType, scheme)) return std::string(shown);
  const std::string wanted = UpperText(Trimmed(shown));
  const auto* tooth = std::ranges::find(kTeeth, std::string_view(wanted), &Tooth::us);
  return std::string(tooth == kTeeth.end() ? shown : tooth->fdi);
}

}  // namespace varnlog::intake
