#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "platform/DateTime.h"

namespace varnlog::dao {

/// A field's type, with the engine's constants.
enum class FieldType : int {
  kBoolean = 1,  // dbBoolean; declared YESNO
  kLong = 4,     // dbLong; declared INTEGER or LONG
  kDouble = 7,   // dbDouble
  kDate = 8,     // dbDate; declared DATETIME, stored as "YYYY-MM-DD hh:mm:ss"
  kText = 10,    // dbText; declared TEXT(n)
  kMemo = 12,    // dbMemo; declared MEMO or TEXT without a length
};

/// What a field is, apart from any row.
struct FieldDef {
  std::string name;
  FieldType type = FieldType::kText;
  int size = 0;            // dbText: most characters; 0 for other types
  bool isCounter = false;  // numbered by the engine when a row is added
};

/// NULL, yes/no, whole number, number, text or date.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string, platform::DateTime>;

/// One field of a record set: its definition, and its value in the record set's current row or, between
/// AddNew/Edit and Update, in the copy buffer. A Field belongs to its record set and stays valid as long as
/// that lives; hold a reference to it where a row is handled a million times.
///
/// Reading where there is no current row throws kNoCurrentRecord; writing outside AddNew/Edit throws
/// kNotSupported, a text with more characters than the field's size kTooLongForField, a value of another
/// type kNotSupported.
class Field {
 public:
  virtual ~Field() = default;

  [[nodiscard]] virtual const FieldDef& Def() const = 0;
  [[nodiscard]] const std::string& Name() const { return Def().name; }
  [[nodiscard]] FieldType Type() const { return Def().type; }
  /// Most characters of a text field, otherwise 0.
  [[nodiscard]] int Size() const { return Def().size; }

  [[nodiscard]] virtual bool IsNull() const = 0;
  /// The text, or "" for NULL. Numbers are written in decimal, yes/no as 1 and 0, dates in the stored form.
  /// The view lives until the record set moves or the field is written.
  [[nodiscard]] virtual std::string_view Text() const = 0;
  /// NULL reads as false.
  [[nodiscard]] virtual bool Boolean() const = 0;
  /// NULL reads as 0.
  [[nodiscard]] virtual std::int64_t Number() const = 0;
  /// NULL, and a text that is no date, read as not set.
  [[nodiscard]] virtual platform::DateTime Date() const = 0;
  [[nodiscard]] virtual dao::Value Value() const = 0;

  virtual void SetNull() = 0;
  virtual void SetText(std::string_view text) = 0;
  virtual void SetBoolean(bool value) = 0;
  virtual void SetNumber(std::int64_t value) = 0;
  virtual void SetDate(platform::DateTime value) = 0;
};

}  // namespace varnlog::dao
