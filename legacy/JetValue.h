#pragma once

#include <optional>

#include "db/dao/Field.h"
#include "legacy/Fault.h"
#include "legacy/JetBytes.h"
#include "legacy/JetTable.h"

namespace varnlog::legacy {

/// The bytes that a fixed column takes up in a row.
[[nodiscard]] std::size_t StoredLength(const JetColumn& column, bool isJet3);

/// Types whose values have a known width: numbers, money, dates, replication ids.
[[nodiscard]] bool IsNumberLike(ColumnType type);

/// Reads a value of such a type; kRowLayout when `stored` is too short for it, kDate when it is no date.
[[nodiscard]] std::optional<FaultKind> DecodeNumber(ColumnType type, Bytes stored, dao::Value& value);

/// A date is a number of days since 1899-12-30 whose fraction is the time of day, also before that day: -1.25
/// is six o'clock on 1899-12-29. Rounded to the second, 24:00 being the next day. Nothing outside the years
/// 100 to 9999.
[[nodiscard]] std::optional<platform::DateTime> DateFromDays(double days);

/// Ten-thousandths as a decimal number: 35000 is "3.5000".
[[nodiscard]] std::string MoneyText(std::int64_t tenThousandths);

}  // namespace varnlog::legacy
