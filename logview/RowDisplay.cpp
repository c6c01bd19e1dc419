#include "logview/RowDisplay.h"

#include "logview/Selection.h"

namespace varnlog::logview {

RowDisplay::RowDisplay(dao::Recordset& rows, const core::TextLookup& texts, const intake::ToothScheme& scheme,
                       const platform::ShortDate& shortDate)
    : rows_(rows),
      texts_(texts),
      scheme_(scheme),
      shortDate_(shortDate),
      taken_(rows.Fields("tXrayTs")),
      name_(rows.Fields("tXraySName")),
      firstName_(rows.Fields("tXraySFirstname")),
      birthday_(rows.Fields("tXrayDBirthday")) {
  for (std::size_t i = 0; i < kColumns.size(); ++i) {
    if (!kColumns[i].field.empty()) stored_[i] = &rows.Fields(kColumns[i].field);
  }
}

std::string RowDisplay::Text(int column) const {
  if (column < 0 || column >= kColumnCount) return {};
  switch (column) {
    case kNumberColumn:
      return std::to_string(rows_.AbsolutePosition() + 1);
    case kDateColumn:
      return shortDate_.Format(taken_.Date().DatePart());
    case kPatientColumn:
      return Patient();
    case kPregnancyColumn:
      return intake::PregnancyCodeToText(stored_[kPregnancyColumn]->Text(), texts_);
    case kRegionColumn:
      return Region();
    case kRetakeColumn:
      return intake::RepeatCodeToText(stored_[kRetakeColumn]->Text(), texts_);
    default:
      return std::string(stored_[static_cast<std::size_t>(column)]->Text());
  }
}

std::string RowDisplay::Patient() const {
  return FormatPatient(name_.Text(), firstName_.Text(), birthday_.Date(), shortDate_);
}

std::string RowDisplay::Region() const {
  const dao::Field& region = *stored_[kRegionColumn];
  const dao::Field& type = *stored_[kTypeColumn];
  if (region.IsNull() || type.IsNull()) return {};
  return intake::ToothToDisplay(region.Text(), type.Text(), scheme_);
}

}  // namespace varnlog::logview
