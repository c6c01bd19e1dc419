#include "cli/Options.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <CLI/CLI.hpp>

#include "platform/Files.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;
using core::SelectionKind;
using platform::DateTime;
using platform::ShortDate;

constexpr std::array<std::pair<std::string_view, SelectionKind>, 5> kTypes = {{
    {"XI", SelectionKind::kPeriodXI},
    {"XP", SelectionKind::kPeriodXP},
    {"XC", SelectionKind::kPeriodXC},
    {"XS", SelectionKind::kPeriodXS},
    {"XV", SelectionKind::kPeriodXV},
}};

DateTime ReadDate(std::string_view text, const ShortDate& shortDate) {
  const auto date = shortDate.Parse(text);
  if (!date) throw UsageError("VC_ERR_DATE"_key, "dData", std::string(text));
  return date->DatePart();
}

SelectionKind KindOfType(const std::string& type) {
  for (const auto& [code, kind] : kTypes) {
    if (code == type) return kind;
  }
  throw UsageError("VC_ERR_TYPE"_key, "strType", type);
}

SelectionKind KindOf(const Options& options) {
  if (options.from.empty() != options.to.empty()) throw UsageError("VC_ERR_PERIOD"_key);
  const bool hasPeriod = !options.from.empty();
  const bool hasPatient = !options.patient.empty();
  const bool hasType = !options.type.empty();
  if (hasType && (hasPatient || !hasPeriod)) throw UsageError("VC_ERR_SELECTION"_key);
  if (hasType) return KindOfType(options.type);
  if (hasPatient) return hasPeriod ? SelectionKind::kPatientPeriod : SelectionKind::kPatient;
  return hasPeriod ? SelectionKind::kPeriod : SelectionKind::kAll;
}

/// "Surname, First name *birth date", the form in which patients are shown. A name may hold a '*' or a
/// further comma; the last " *" and the first ", " divide.
void SetPatient(core::Selection& selection, const std::string& patient, const ShortDate& shortDate) {
  const auto comma = patient.find(", ");
  const auto star = patient.rfind(" *");
  if (comma == std::string::npos || star == std::string::npos || star < comma + 2) {
    throw UsageError("VC_ERR_PATIENT"_key, "strPatName", patient);
  }
  selection.strPatNameGl = patient.substr(0, comma);
  selection.strPatFirstnameGl = patient.substr(comma + 2, star - comma - 2);
  selection.dPatBirthdayGl = ReadDate(std::string_view(patient).substr(star + 2), shortDate);
}

}  // namespace

std::string FromCurrentFolder(const std::string& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(platform::ToPath(path), error);
  return error ? path : platform::FromPath(absolute);
}

void AddCommonOptions(CLI::App& app, Options& options) {
  app.add_option("--folder", options.folder,
                 "program folder; that of VARNLOG_FOLDER when not given, else the executable's own");
  app.add_option("--file", options.file, "log file; the one of varnlog.ini when not given");
}

void AddSelectionOptions(CLI::App& command, Options& options) {
  command.add_option("--from", options.from, "first day of the period");
  command.add_option("--to", options.to, "last day of the period");
  command.add_option("--type", options.type, "exposures of one type in the period: XI, XP, XC, XS or XV");
  command.add_option("--patient", options.patient, "one patient: \"Surname, First name *birth date\"");
}

void SetSelection(core::Selection& selection, const Options& options, const ShortDate& shortDate) {
  selection.SortSelectionGl = KindOf(options);
  if (!options.from.empty()) {
    selection.dBegGl = ReadDate(options.from, shortDate);
    selection.dEndGl = ReadDate(options.to, shortDate);
  }
  if (!options.patient.empty()) SetPatient(selection, options.patient, shortDate);
}

void ValidateSelection(const Options& options) {
  core::Selection unused;
  SetSelection(unused, options, ShortDate::FromSystem());
}

}  // namespace varnlog::cli
