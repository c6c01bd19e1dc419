#include "logview/Columns.h"

#include <utility>

namespace varnlog::logview {

using namespace core::literals;

namespace {

constexpr core::TextKey kPregnancies[] = {"RC_PREGYES"_key, "RC_PREGNO"_key, "RC_PREGUNKNOWN"_key};
constexpr core::TextKey kRetakes[] = {"RC_ND"_key, "RC_REPEAT"_key};

}  // namespace

const std::array<Column, kColumnCount> kColumns = {{
    {.headingKey = "RS_NR", .tipKey = "RS_TIP_NR", .form = Form::kRowNumber, .digits = 7, .isNumber = true},
    {.headingKey = "RS_DATE",
     .tipKey = "RS_TIP_DATE",
     .form = Form::kDate,
     .digits = 11,
     .sortFields = {"tXrayTs"}},
    {.headingKey = "RS_PATIENT",
     .tipKey = "RS_TIP_PATIENT",
     .form = Form::kPatient,
     .digits = 32,
     .sortFields = {"tXraySName", "tXraySFirstname", "tXrayDBirthday"}},
    // The field has room for the code only, not for the text that is chosen.
    {.headingKey = "RS_PREGNANCY",
     .tipKey = "RS_TIP_PREGNANCY",
     .form = Form::kPregnancy,
     .field = "tXraySPreg",
     .editFlag = "tXrayBEdPreg",
     .exceptForMen = true,
     .limitsInput = false,
     .choices = kPregnancies,
     .digits = 11},
    {.headingKey = "RS_TYPE",
     .tipKey = "RS_TIP_TYPE",
     .field = "tXraySType",
     .editFlag = "tXrayBEdType",
     .digits = 5},
    {.headingKey = "RS_REGION",
     .tipKey = "RS_TIP_REGION",
     .form = Form::kRegion,
     .field = "tXraySRegio",
     .editFlag = "tXrayBEdRegio",
     .digits = 6},
    {.headingKey = "RS_MS",
     .tipKey = "RS_TIP_MS",
     .field = "tXraySRadDur",
     .editFlag = "tXrayBEdRadDur",
     .digits = 7,
     .isNumber = true},
    {.headingKey = "RS_KV",
     .tipKey = "RS_TIP_KV",
     .field = "tXraySVolt",
     .editFlag = "tXrayBEdVolt",
     .digits = 6,
     .isNumber = true},
    {.headingKey = "RS_MA",
     .tipKey = "RS_TIP_MA",
     .field = "tXraySCur",
     .editFlag = "tXrayBEdCur",
     .digits = 6,
     .isNumber = true},
    // A dose that is too long is reported when it is written.
    {.heading = "mGycm2",
     .tipKey = "RS_TIP_DOSE",
     .field = "tXraySDose",
     .editFlag = "tXrayBEdDose",
     .limitsInput = false,
     .digits = 9,
     .isNumber = true},
    {.headingKey = "RS_NOTDIAG",
     .tipKey = "RS_TIP_NOTDIAG",
     .form = Form::kRetake,
     .field = "tXraySDiagRetry",
     .editFlag = "tXrayBEdDiagRetry",
     .mayBeEmpty = true,
     .choices = kRetakes,
     .digits = 11},
    {.headingKey = "RS_PERSCHARGE",
     .tipKey = "RS_TIP_PERSCHARGE",
     .field = "tXraySDr",
     .editFlag = "tXrayBEdDr",
     .digits = 13,
     .suggests = true},
    {.headingKey = "RS_COMMENT",
     .tipKey = "RS_TIP_COMMENT",
     .field = "tXraySComment",
     .digits = 12,
     .suggests = true},
}};

std::string Column::SortClause(bool descending) const {
  std::string fields;
  const auto add = [&](std::string_view name) {
    if (name.empty()) return;
    fields.append(fields.empty() ? "" : " , ")
        .append("TXray.")
        .append(name)
        .append(descending ? " DESC" : "");
  };
  for (const std::string_view name : sortFields) add(name);
  if (fields.empty()) add(field);
  return fields.empty() ? fields : "ORDER BY " + fields + ";";
}

std::string TypeName(std::string_view code, const core::TextLookup& texts) {
  constexpr std::pair<std::string_view, core::TextKey> kTypes[] = {{"XI", "RS_TYPE_XI"_key},
                                                                   {"XP", "RS_TYPE_XP"_key},
                                                                   {"XC", "RS_TYPE_XC"_key},
                                                                   {"XS", "RS_TYPE_XS"_key},
                                                                   {"XV", "RS_TYPE_XV"_key}};
  for (const auto& [known, name] : kTypes) {
    if (known == code) return texts.GetText(name);
  }
  return {};
}

std::string ColumnHeading(int column, const core::TextLookup& texts) {
  if (column < 0 || column >= kColumnCount) return {};
  const Column& shown = kColumns[static_cast<std::size_t>(column)];
  if (shown.headingKey.empty()) return std::string(shown.heading);
  return texts.GetText(core::TextKey(shown.headingKey));
}

}  // namespace varnlog::logview
