#include "logview/HistoryText.h"

#include <utility>

#include "logview/Columns.h"

namespace varnlog::logview {

using namespace core::literals;

namespace {

constexpr const char* kNothing = "\u2013";

// Names of the seals' and the changes' kinds as the log holds them.
constexpr std::pair<std::string_view, core::TextKey> kOrigins[] = {
    {"intake", "HI_ORIGIN_INTAKE"_key},
    {"conversion", "HI_ORIGIN_CONVERSION"_key},
    {"takeover", "HI_ORIGIN_TAKEOVER"_key},
    {"repair", "HI_ORIGIN_REPAIR"_key},
};
constexpr std::pair<std::string_view, core::TextKey> kChanges[] = {
    {"entry", "HI_ENTRY"_key}, {"correction", "HI_CORRECTION"_key}, {"comment", "HI_COMMENT"_key},
    {"lock", "HI_LOCK"_key},   {"suite", "HI_SUITE"_key},           {"repair", "HI_REPAIR"_key},
};

std::optional<core::TextKey> KeyOf(std::span<const std::pair<std::string_view, core::TextKey>> kinds,
                                   std::string_view kind) {
  for (const auto& [name, key] : kinds)
    if (name == kind) return key;
  return std::nullopt;
}

bool IsFlag(std::string_view field) {
  return field.starts_with("tXrayBEd");
}

std::string WhoOf(const seals::Origin& origin) {
  if (origin.fullName.empty() || origin.fullName == origin.account) return origin.account;
  return origin.fullName + " (" + origin.account + ")";
}

}  // namespace

std::optional<int> ColumnOf(std::string_view field) {
  if (field == "tXraySName" || field == "tXraySFirstname") return kPatientColumn;
  for (int i = 0; i < kColumnCount; ++i) {
    const Column& column = kColumns.at(static_cast<std::size_t>(i));
    if (!field.empty() && (column.field == field || column.editFlag == field)) return i;
  }
  return std::nullopt;
}

std::string HistoryText::What(const seals::HistoryEntry& entry) const {
  if (entry.field.empty()) {
    const auto origin = KeyOf(kOrigins, entry.kind);
    return origin ? texts_.GetText(*origin) : entry.kind;
  }
  const auto column = ColumnOf(entry.field);
  const std::string field = column ? ColumnHeading(*column, texts_) : entry.field;
  const auto change = KeyOf(kChanges, entry.kind);
  return change ? core::FilledText(texts_, *change, {{"strField", field}}) : entry.kind + ": " + field;
}

std::string HistoryText::When(const seals::Origin& origin) const {
  return origin.time.IsSet() ? shortDate_.FormatGeneral(origin.LocalTime()) : std::string();
}

std::string HistoryText::Value(const seals::HistoryEntry& entry, const std::optional<std::string>& value,
                               std::string_view type) const {
  if (!value) return kNothing;
  if (IsFlag(entry.field)) return texts_.GetText(*value == "1" ? "HI_OPEN"_key : "HI_LOCKED"_key);
  if (value->empty()) return texts_.GetText("HI_EMPTY"_key);
  const auto column = ColumnOf(entry.field);
  switch (column ? kColumns.at(static_cast<std::size_t>(*column)).form : Form::kStored) {
    case Form::kPregnancy:
      return intake::PregnancyCodeToText(*value, texts_);
    case Form::kRetake:
      return intake::RepeatCodeToText(*value, texts_);
    case Form::kRegion:
      return intake::ToothToDisplay(*value, type, scheme_);
    default:
      return *value;
  }
}

HistoryLine HistoryText::Line(const seals::HistoryEntry& entry, std::string_view type) const {
  HistoryLine line{When(entry.origin), WhoOf(entry.origin), entry.origin.place, What(entry), {}, {}};
  if (entry.field.empty()) return line;
  line.before = Value(entry, entry.before, type);
  line.after = Value(entry, entry.after, type);
  return line;
}

std::string HistoryText::Note(const seals::HistoryEntry& entry) const {
  std::string note = What(entry);
  const char* before = " \u2013 ";
  for (const std::string& part : {When(entry.origin), WhoOf(entry.origin), entry.origin.place}) {
    if (part.empty()) continue;
    note += before + part;
    before = ", ";
  }
  return note;
}

std::string HistoryText::NoteWithValues(const seals::HistoryEntry& entry, std::string_view type) const {
  const HistoryLine line = Line(entry, type);
  return line.when + ", " + line.who + ", " + line.where + " \u2013 " + line.what + ": " + line.before +
         " \u2192 " + line.after;
}

}  // namespace varnlog::logview
