#include "legacy/JetValue.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace varnlog::legacy {
namespace {

constexpr double kSecondsADay = 86400;
// Days of 0100-01-01 and 10000-01-01.
constexpr double kFirstDay = -657434;
constexpr double kEndDay = 2958466;

std::size_t Width(ColumnType type) {
  switch (type) {
    case ColumnType::kByte:
      return 1;
    case ColumnType::kInteger:
      return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle:
      return 4;
    case ColumnType::kMoney:
    case ColumnType::kDouble:
    case ColumnType::kDate:
      return 8;
    case ColumnType::kGuid:
      return 16;
    default:
      return 0;
  }
}

std::string GuidText(ByteReader& reader) {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", reader.U32(0),
                unsigned{reader.U16(4)}, unsigned{reader.U16(6)}, unsigned{reader.U8(8)},
                unsigned{reader.U8(9)}, unsigned{reader.U8(10)}, unsigned{reader.U8(11)},
                unsigned{reader.U8(12)}, unsigned{reader.U8(13)}, unsigned{reader.U8(14)},
                unsigned{reader.U8(15)});
  return text;
}

}  // namespace

std::size_t StoredLength(const JetColumn& column, bool isJet3) {
  if (IsNumberLike(column.type)) return Width(column.type);
  const auto size = static_cast<std::size_t>(column.size);
  return column.type == ColumnType::kText && !isJet3 ? 2 * size : size;
}

bool IsNumberLike(ColumnType type) {
  return Width(type) != 0;
}

std::optional<FaultKind> DecodeNumber(ColumnType type, Bytes stored, dao::Value& value) {
  if (stored.size() < Width(type)) return FaultKind::kRowLayout;
  ByteReader reader(stored);
  switch (type) {
    case ColumnType::kByte:
      value = std::int64_t{reader.U8(0)};
      break;
    case ColumnType::kInteger:
      value = std::int64_t{static_cast<std::int16_t>(reader.U16(0))};
      break;
    case ColumnType::kLong:
      value = std::int64_t{static_cast<std::int32_t>(reader.U32(0))};
      break;
    case ColumnType::kMoney:
      value = MoneyText(static_cast<std::int64_t>(reader.U64(0)));
      break;
    case ColumnType::kSingle:
      value = double{reader.F32(0)};
      break;
    case ColumnType::kDouble:
      value = reader.F64(0);
      break;
    case ColumnType::kGuid:
      value = GuidText(reader);
      break;
    default:
      if (const auto date = DateFromDays(reader.F64(0))) {
        value = *date;
      } else {
        return FaultKind::kDate;
      }
  }
  return std::nullopt;
}

std::optional<platform::DateTime> DateFromDays(double days) {
  // Written so that NaN fails, too.
  if (!(days > kFirstDay - 1 && days < kEndDay)) return std::nullopt;
  const double day = std::trunc(days);
  const double time = std::round(std::fabs(days - day) * kSecondsADay);
  const double seconds = day * kSecondsADay + time;
  if (seconds < kFirstDay * kSecondsADay || seconds >= kEndDay * kSecondsADay) return std::nullopt;
  return platform::DateTime::FromSeconds(static_cast<std::int64_t>(seconds));
}

std::string MoneyText(std::int64_t tenThousandths) {
  // The magnitude in the unsigned type, for the lowest number has no positive counterpart.
  const bool isNegative = tenThousandths < 0;
  const auto raw = static_cast<std::uint64_t>(tenThousandths);
  const std::uint64_t magnitude = isNegative ? 0 - raw : raw;
  std::string digits = std::to_string(magnitude);
  if (digits.size() < 5) digits.insert(0, 5 - digits.size(), '0');
  digits.insert(digits.size() - 4, 1, '.');
  return isNegative ? "-" + digits : digits;
}

}  // namespace varnlog::legacy
