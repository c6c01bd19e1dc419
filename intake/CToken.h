#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace varnlog::intake {

/// One record of the exchange file: 22 texts, numbered as the imaging suite numbers them.
class CToken {
 public:
  enum Property : std::size_t {
    kKind = 0,
    kField1,
    kLastName,
    kFirstName,
    kBirthday,
    kField5,
    kField6,
    kSex,
    kPregCode,
    kTypeCode,
    kTypeExtra,
    kTakeDate,
    kTakeTime,
    kResponsible,
    kField14,
    kField15,
    kRadDur,
    kVolt,
    kCur,
    kField19,
    kField20,
    kDose,
    kPropertyCount,
  };

  [[nodiscard]] const std::string& Get(Property property) const { return values_[property]; }
  void Set(Property property, std::string_view value) { values_[property].assign(value); }
  /// For a reader that appends to the text in place.
  [[nodiscard]] std::string& Mutable(Property property) { return values_[property]; }
  /// Empties every text and keeps its memory for the next record.
  void Reset();

  [[nodiscard]] const std::string& Kind() const { return Get(kKind); }
  [[nodiscard]] const std::string& LastName() const { return Get(kLastName); }
  [[nodiscard]] const std::string& FirstName() const { return Get(kFirstName); }
  [[nodiscard]] const std::string& Birthday() const { return Get(kBirthday); }
  [[nodiscard]] const std::string& Sex() const { return Get(kSex); }
  [[nodiscard]] const std::string& PregCode() const { return Get(kPregCode); }
  [[nodiscard]] const std::string& TypeCode() const { return Get(kTypeCode); }
  [[nodiscard]] const std::string& TypeExtra() const { return Get(kTypeExtra); }
  [[nodiscard]] const std::string& TakeDate() const { return Get(kTakeDate); }
  [[nodiscard]] const std::string& TakeTime() const { return Get(kTakeTime); }
  [[nodiscard]] const std::string& Responsible() const { return Get(kResponsible); }
  [[nodiscard]] const std::string& RadDur() const { return Get(kRadDur); }
  [[nodiscard]] const std::string& Volt() const { return Get(kVolt); }
  [[nodiscard]] const std::string& Cur() const { return Get(kCur); }
  [[nodiscard]] const std::string& Dose() const { return Get(kDose); }

 private:
  std::array<std::string, kPropertyCount> values_;
};

}  // namespace varnlog::intake
