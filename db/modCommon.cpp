#include "db/modCommon.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "platform/Ascii.h"
#include "platform/CodePage.h"
#include "platform/SafeFile.h"

namespace varnlog::db {
namespace {

constexpr int kFirstYear = 1880;
constexpr std::string_view kSeparators = "\\/";

/// A whole number of at most nine digits; nothing for any other text.
std::optional<int> DigitsToNumber(std::string_view text) {
  if (text.empty() || text.size() > 9 || !std::all_of(text.begin(), text.end(), platform::ascii::IsDigit))
    return std::nullopt;
  int value = 0;
  for (const char c : text) value = value * 10 + (c - '0');
  return value;
}

/// The same with blanks around it allowed.
std::optional<int> TextToNumber(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return DigitsToNumber(text);
}

/// A text of three numbers with a separator between them.
struct ThreeNumbers {
  int first;
  int second;
  int third;
  std::size_t thirdAt;  // where the third number's text begins
};

/// `earliestSecond` is the first place, counted from 0, at which the second separator may stand.
std::optional<ThreeNumbers> SplitAtTwo(std::string_view text, char separator, std::size_t earliestSecond) {
  const std::size_t one = text.find(separator);
  if (one == std::string_view::npos || one == 0) return std::nullopt;
  const std::size_t two = text.find(separator, one + 1);
  if (two == std::string_view::npos || two < earliestSecond) return std::nullopt;
  const auto first = TextToNumber(text.substr(0, one));
  const auto second = TextToNumber(text.substr(one + 1, two - one - 1));
  const auto third = TextToNumber(text.substr(two + 1));
  if (!first || !second || !third) return std::nullopt;
  return ThreeNumbers{*first, *second, *third, two + 1};
}

std::optional<ThreeNumbers> SplitDate(std::string_view text) {
  return SplitAtTwo(text, '.', 3);
}

/// The numbers of a text that passes the test for a date, the year widened here and in the text.
std::optional<ThreeNumbers> TestedDate(std::string& text, const platform::Clock& clock) {
  auto date = SplitDate(text);
  if (!date || date->first < 1 || date->first > 31 || date->second < 1 || date->second > 12) return {};
  const int thisYear = clock.Today().Year();
  const bool widened = date->third < 100;
  if (widened) date->third += date->third > thisYear % 100 ? 1900 : 2000;
  if (date->third < kFirstYear || date->third > thisYear) return {};
  if (widened) text.replace(date->thirdAt, std::string::npos, std::to_string(date->third));
  return date;
}

std::optional<ThreeNumbers> SplitTime(std::string_view text) {
  constexpr std::size_t kEarliest = 4;
  const auto time = SplitAtTwo(text, ':', kEarliest);
  if (!time || time->first > 23 || time->second > 59 || time->third > 59) return std::nullopt;
  return time;
}

/// The date of a text with numbers at fixed places. Not set when one of them is none.
platform::DateTime DateAt(std::string_view text, std::size_t year, std::size_t month, std::size_t day,
                          std::optional<int> (*toNumber)(std::string_view)) {
  if (text.size() < std::max({year + 4, month + 2, day + 2})) return {};
  const auto yearValue = toNumber(text.substr(year, 4));
  const auto monthValue = toNumber(text.substr(month, 2));
  const auto dayValue = toNumber(text.substr(day, 2));
  if (!yearValue || !monthValue || !dayValue) return {};
  return platform::DateTime::FromSerial(*yearValue, *monthValue, *dayValue);
}

std::string TwoDigits(int value) {
  return {static_cast<char>('0' + value / 10 % 10), static_cast<char>('0' + value % 10)};
}

}  // namespace

std::string FileNamePart(std::string_view path) {
  const std::size_t last = path.find_last_of(kSeparators);
  return last == std::string_view::npos ? std::string() : std::string(path.substr(last + 1));
}

std::string FolderPart(std::string_view path) {
  const std::size_t last = path.find_last_of(kSeparators);
  return last == std::string_view::npos ? std::string() : std::string(path.substr(0, last));
}

std::string_view CutAtZero(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

std::string SqlDateLiteral(platform::DateTime date) {
  return "#" + std::to_string(date.Month()) + "/" + std::to_string(date.Day()) + "/" +
         std::to_string(date.Year()) + "#";
}

std::string ReplaceSortClause(std::string_view sql, std::string_view clause) {
  if (clause.empty()) return std::string(sql);
  const std::size_t place = sql.find("ORDER BY ");
  if (place == std::string_view::npos || place == 0) return {};
  return std::string(sql.substr(0, place)).append(clause);
}

bool TableExists(const dao::Database& database, std::string_view name) {
  const std::string wanted = platform::UpperCase(name);
  const std::vector<std::string> names = database.TableNames();
  return std::any_of(names.begin(), names.end(), [&wanted](const std::string& candidate) {
    return platform::UpperCase(candidate) == wanted;
  });
}

std::string DateToCompactText(platform::DateTime date) {
  return TwoDigits(date.Year() / 100) + TwoDigits(date.Year()) + TwoDigits(date.Month()) +
         TwoDigits(date.Day());
}

platform::DateTime CompactTextToDate(std::string_view text) {
  return DateAt(text, 0, 4, 6, DigitsToNumber);
}

bool IsDottedDate(std::string& text, const platform::Clock& clock) {
  return TestedDate(text, clock).has_value();
}

platform::DateTime ReadDottedDate(std::string& text, const platform::Clock& clock) {
  const auto date = TestedDate(text, clock);
  if (!date) return {};
  const bool isAtFixedPlaces = text.size() == 10 && date->thirdAt == 6 && text[2] == '.';
  // Nearly every text is: a million of them need not be read twice.
  if (isAtFixedPlaces) return platform::DateTime::FromSerial(date->third, date->second, date->first);
  return DateAt(text, 6, 3, 0, TextToNumber);
}

platform::DateTime DottedTextToDate(std::string_view text, const platform::Clock& clock) {
  std::string rewritten(text);
  const platform::DateTime date = ReadDottedDate(rewritten, clock);
  return date.IsSet() ? date : DateAt(kDefaultDateText, 6, 3, 0, DigitsToNumber);
}

std::optional<platform::DateTime> ReadColonTime(std::string_view text) {
  const auto time = SplitTime(text);
  if (!time) return std::nullopt;
  return platform::DateTime::FromSeconds(time->first * 3600 + time->second * 60 + time->third);
}

bool IsColonTime(std::string_view text) {
  return SplitTime(text).has_value();
}

platform::DateTime ColonTextToTime(std::string_view text) {
  return ReadColonTime(text).value_or(platform::DateTime());
}

bool ChangeToFolder(std::string_view folder) {
  std::error_code error;
  std::filesystem::current_path(platform::ToPath(folder), error);
  return !error;
}

bool CopyFile(std::string_view source, std::string_view target) {
  const std::filesystem::path from = platform::ToPath(source);
  return !platform::CopyWholeFile(from, platform::ToPath(target), platform::IfTaken::kReplace, from);
}

bool MakeFolderPath(std::string_view path) {
  std::error_code error;
  std::filesystem::create_directories(platform::ToPath(path), error);
  return !error && FolderExists(path);
}

bool FolderExists(std::string_view path) {
  std::error_code error;
  return !path.empty() && std::filesystem::is_directory(platform::ToPath(path), error);
}

bool FileExists(std::string_view path) {
  std::error_code error;
  const auto status = std::filesystem::status(platform::ToPath(path), error);
  return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool DeleteFile(std::string_view path) {
  return FileExists(path) && !platform::RemoveFile(platform::ToPath(path));
}

}  // namespace varnlog::db
