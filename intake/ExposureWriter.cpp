#include "intake/ExposureWriter.h"

#include <utility>

#include "platform/CodePage.h"

namespace varnlog::intake {

using core::operator""_key;

namespace {

constexpr std::string_view kNotDiagnosableMark = "~~";
constexpr std::string_view kNotDiagnosable = "N.d.";
constexpr std::string_view kRepeat = "Wdh.";

std::string_view SexOf(std::string_view code) {
  if (code == "M") return "m";
  if (code == "F") return "f";
  return "-";
}

std::string_view PregnancyOf(std::string_view code) {
  if (code == "P") return "J";
  if (code == "N") return "N";
  return "-";
}

}  // namespace

/// Looked up once; a field is written a million times.
struct ExposureWriter::Fields {
  explicit Fields(dao::Recordset& rows)
      : name(rows.Fields("tXraySName")),
        firstName(rows.Fields("tXraySFirstname")),
        birthday(rows.Fields("tXrayDBirthday")),
        sex(rows.Fields("tXraySSex")),
        pregnancy(rows.Fields("tXraySPreg")),
        pregnancyOpen(rows.Fields("tXrayBEdPreg")),
        taken(rows.Fields("tXrayTs")),
        responsible(rows.Fields("tXraySDr")),
        responsibleOpen(rows.Fields("tXrayBEdDr")),
        type(rows.Fields("tXraySType")),
        typeOpen(rows.Fields("tXrayBEdType")),
        diagRetry(rows.Fields("tXraySDiagRetry")),
        diagRetryOpen(rows.Fields("tXrayBEdDiagRetry")),
        region(rows.Fields("tXraySRegio")),
        regionOpen(rows.Fields("tXrayBEdRegio")),
        duration(rows.Fields("tXraySRadDur")),
        durationOpen(rows.Fields("tXrayBEdRadDur")),
        volt(rows.Fields("tXraySVolt")),
        voltOpen(rows.Fields("tXrayBEdVolt")),
        current(rows.Fields("tXraySCur")),
        currentOpen(rows.Fields("tXrayBEdCur")),
        dose(rows.Fields("tXraySDose")),
        doseOpen(rows.Fields("tXrayBEdDose")) {}

  dao::Field& name;
  dao::Field& firstName;
  dao::Field& birthday;
  dao::Field& sex;
  dao::Field& pregnancy;
  dao::Field& pregnancyOpen;
  dao::Field& taken;
  dao::Field& responsible;
  dao::Field& responsibleOpen;
  dao::Field& type;
  dao::Field& typeOpen;
  dao::Field& diagRetry;
  dao::Field& diagRetryOpen;
  dao::Field& region;
  dao::Field& regionOpen;
  dao::Field& duration;
  dao::Field& durationOpen;
  dao::Field& volt;
  dao::Field& voltOpen;
  dao::Field& current;
  dao::Field& currentOpen;
  dao::Field& dose;
  dao::Field& doseOpen;
};

namespace {

/// A value that the record lacks is open on a new row; on a known one the flag stays as it is.
void WriteOpenFlag(dao::Field& flag, bool isEmpty, bool isNew) {
  if (!isEmpty) {
    flag.SetBoolean(false);
  } else if (isNew) {
    flag.SetBoolean(true);
  }
}

}  // namespace

ExposureWriter::ExposureWriter(dao::Database& log, TubeDefaults defaults, const platform::Clock& clock)
    : defaults_(std::move(defaults)),
      rows_(log.OpenRecordset("TXray", dao::RecordsetType::kTable)),
      fields_(std::make_unique<Fields>(*rows_)),
      dates_(clock),
      expectedDates_(clock),
      ahead_(dynamic_cast<dao::SeeksAhead*>(rows_.get())) {
  rows_->SetIndex("iXRayIdent");
}

ExposureWriter::~ExposureWriter() = default;

ExposureWriter::Done ExposureWriter::Take(CToken& token) {
  cut_.clear();
  if (!IsExposure(token)) return Done::kNoExposure;
  dates_.Read(token);
  // Before the look-up: a name that was cut when it was stored must be found again.
  Fit(token, CToken::kLastName, fields_->name, "RU_FIELD_NAME"_key);
  Fit(token, CToken::kFirstName, fields_->firstName, "RU_FIELD_FIRSTNAME"_key);
  rows_->Seek("=", {std::string_view(token.LastName()), std::string_view(token.FirstName()),
                    dates_.Birthday(), dates_.Taken()});
  const bool isNew = rows_->NoMatch();
  if ((token.Kind() == "I") == isNew) {
    cut_.clear();
    return isNew ? Done::kUnknown : Done::kKnown;
  }
  if (isNew) {
    rows_->AddNew();
  } else {
    rows_->Edit();
  }
  WritePatient(token, isNew);
  WriteResponsible(token);
  WriteRegion(token, isNew);
  WriteDeviceValues(token, isNew);
  rows_->Update();
  return isNew ? Done::kAdded : Done::kChanged;
}

void ExposureWriter::Expect(std::span<const CToken> tokens) {
  if (tokens.empty() || ahead_ == nullptr) return;
  std::vector<platform::DateTime> dates;
  std::vector<platform::DateTime> changed;
  for (const CToken& token : tokens) {
    if (!IsExposure(token)) continue;
    for (const auto property : {CToken::kTakeDate, CToken::kTakeTime, CToken::kBirthday})
      expected_.Set(property, token.Get(property));
    expectedDates_.Read(expected_);
    dates.push_back(expectedDates_.Taken());
    if (token.Kind() == "I") changed.push_back(dates.back());
  }
  ahead_->Expect(dates, changed);
}

void ExposureWriter::Fit(CToken& token, CToken::Property property, const dao::Field& field,
                         core::TextKey caption) {
  std::string& text = token.Mutable(property);
  const auto most = static_cast<std::size_t>(field.Size());
  if (most == 0 || text.size() <= most || platform::CharacterCount(text) <= most) return;
  text.resize(platform::FirstCharacters(text, most).size());
  cut_.push_back(caption);
}

void ExposureWriter::WritePatient(const CToken& token, bool isNew) {
  fields_->name.SetText(token.LastName());
  fields_->firstName.SetText(token.FirstName());
  fields_->birthday.SetDate(dates_.Birthday());
  if (isNew && !token.Sex().empty()) fields_->sex.SetText(SexOf(token.Sex()));
  if (!token.PregCode().empty()) fields_->pregnancy.SetText(PregnancyOf(token.PregCode()));
  fields_->pregnancyOpen.SetBoolean(token.Sex() != "M");
  fields_->taken.SetDate(dates_.Taken());
}

void ExposureWriter::WriteResponsible(CToken& token) {
  Fit(token, CToken::kResponsible, fields_->responsible, "RU_FIELD_DR"_key);
  const std::string& responsible = token.Responsible();
  fields_->responsible.SetText(responsible);
  fields_->responsibleOpen.SetBoolean(responsible.empty() || responsible == "-");
}

void ExposureWriter::WriteRegion(CToken& token, bool isNew) {
  fields_->type.SetText(token.TypeCode());
  fields_->typeOpen.SetBoolean(token.TypeCode().empty());
  const bool notDiagnosable = token.TypeExtra() == kNotDiagnosableMark;
  if (isNew) {
    if (notDiagnosable) fields_->diagRetry.SetText(kNotDiagnosable);
  } else if (fields_->diagRetry.Text() != kRepeat) {
    fields_->diagRetry.SetText(notDiagnosable ? kNotDiagnosable : std::string_view());
  }
  fields_->diagRetryOpen.SetBoolean(!notDiagnosable);
  // The mark is no region, and whoever looks at the region below must not see it.
  if (notDiagnosable) token.Set(CToken::kTypeExtra, {});
  fields_->region.SetText(token.TypeExtra());
  WriteOpenFlag(fields_->regionOpen, token.TypeExtra().empty(), isNew);
}

void ExposureWriter::WriteDeviceValues(CToken& token, bool isNew) {
  Fit(token, CToken::kRadDur, fields_->duration, "RU_FIELD_RADDUR"_key);
  fields_->duration.SetText(token.RadDur());
  WriteOpenFlag(fields_->durationOpen, token.RadDur().empty(), isNew);

  // The flags are decided before a default is put in: the user can still correct it.
  const bool takesDefault = isNew && token.TypeCode() == "XI";
  WriteOpenFlag(fields_->voltOpen, token.Volt().empty(), isNew);
  if (token.Volt().empty() && takesDefault) token.Set(CToken::kVolt, defaults_.volt);
  Fit(token, CToken::kVolt, fields_->volt, "RU_FIELD_VOLT"_key);
  if (!token.Volt().empty()) fields_->volt.SetText(token.Volt());

  WriteOpenFlag(fields_->currentOpen, token.Cur().empty(), isNew);
  if (token.Cur().empty() && takesDefault) token.Set(CToken::kCur, defaults_.current);
  Fit(token, CToken::kCur, fields_->current, "RU_FIELD_CUR"_key);
  if (!token.Cur().empty()) fields_->current.SetText(token.Cur());

  Fit(token, CToken::kDose, fields_->dose, "RU_FIELD_DOSE"_key);
  if (!token.Dose().empty()) fields_->dose.SetText(token.Dose());
  WriteOpenFlag(fields_->doseOpen, token.Dose().empty(), isNew);
}

}  // namespace varnlog::intake
