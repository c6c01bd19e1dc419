#include "intake/RecordDates.h"

#include <utility>

#include "db/modCommon.h"

namespace varnlog::intake {

using core::operator""_key;

platform::DateTime RecordDates::ReadDate(std::string& text, core::TextKey message, KnownDate& known) {
  if (known.date.IsSet() && text == known.text) return known.date;
  std::string written = text;
  const platform::DateTime date = db::ReadDottedDate(text, clock_);
  if (date.IsSet()) {
    known = {std::move(written), date};
    return date;
  }
  defaults_.push_back({message, db::kDefaultDateText});
  text = db::kDefaultDateText;
  return db::DottedTextToDate(text, clock_);
}

platform::DateTime RecordDates::ReadTime(std::string& text) {
  if (const auto time = db::ReadColonTime(text)) return *time;
  defaults_.push_back({"RU_ERR_TAKETIME"_key, db::kDefaultTimeText});
  text = db::kDefaultTimeText;
  return db::ColonTextToTime(text);
}

void RecordDates::Read(CToken& token) {
  defaults_.clear();
  birthday_ = ReadDate(token.Mutable(CToken::kBirthday), "RU_ERR_BIRTHDATE"_key, knownBirthday_);
  const platform::DateTime day =
      ReadDate(token.Mutable(CToken::kTakeDate), "RU_ERR_TAKEDATE"_key, knownTakeDate_);
  taken_ = day.AtTimeOf(ReadTime(token.Mutable(CToken::kTakeTime)));
}

bool IsExposure(const CToken& token) {
  return token.TypeCode().starts_with('X');
}

std::string TextOf(const core::TextLookup& texts, const CToken& token, const DefaultTaken& taken) {
  return core::FilledText(texts, taken.message,
                          {{"strLastName", token.LastName()},
                           {"str1stName", token.FirstName()},
                           {"dDefault", std::string(taken.shown)}});
}

}  // namespace varnlog::intake
