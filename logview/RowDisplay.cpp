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
      birthday_(rows.Fields("tXrayDBirthday")),
      type_(rows.Fields("tXraySType")) {
  for (std::size_t i = 0; i < kColumns.size(); ++i) {
    if (!kColumns[i].field.empty()) stored_[i] = &rows.Fields(kColumns[i].field);
  }
}

std::string RowDisplay::Text(int column) const {
  if (column < 0 || column >= kColumnCount) return {};
  const auto at = static_cast<std::size_t>(column);
  switch (kColumns[at].form) {
    case Form::kRowNumber:
      return std::to_string(rows_.AbsolutePosition() + 1);
    case Form::kDate:
      return shortDate_.Format(taken_.Date().DatePart());
    case Form::kPatient:
      return Patient();
    case Form::kPregnancy:
      return intake::PregnancyCodeToText(stored_[at]->Text(), texts_);
    case Form::kRegion:
      return Region(*stored_[at]);
    case Form::kRetake:
      return intake::RepeatCodeToText(stored_[at]->Text(), texts_);
    case Form::kStored:
      return std::string(stored_[at]->Text());
  }
  return {};
}

std::string RowDisplay::Patient() const {
  return FormatPatient(name_.Text(), firstName_.Text(), birthday_.Date(), shortDate_);
}

std::string RowDisplay::Region(const dao::Field& region) const {
  if (region.IsNull() || type_.IsNull()) return {};
  return intake::ToothToDisplay(region.Text(), type_.Text(), scheme_);
}

}  // namespace varnlog::logview
