#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"
#include "platform/Clock.h"
#include "platform/DateTime.h"

namespace varnlog::db {

/// The text after the last separator; "" when there is none.
[[nodiscard]] std::string FileNamePart(std::string_view path);
/// The text up to, not including, the last separator; "" when there is none.
[[nodiscard]] std::string FolderPart(std::string_view path);
/// The text before the first zero character.
[[nodiscard]] std::string_view CutAtZero(std::string_view text);

/// "#m/d/yyyy#", which the engine's SQL reads whatever the user's locale.
[[nodiscard]] std::string SqlDateLiteral(platform::DateTime date);

/// The SQL with everything from "ORDER BY " on replaced. An empty clause keeps the SQL; an SQL without
/// "ORDER BY ", or one that begins with it, gives "".
[[nodiscard]] std::string ReplaceSortClause(std::string_view sql, std::string_view clause);

/// Compares in upper case. Throws dao::EngineError: a database that cannot be read just now is not one
/// without the table.
[[nodiscard]] bool TableExists(const dao::Database& database, std::string_view name);

/// "yyyymmdd", the form of dates in the INI file.
[[nodiscard]] std::string DateToCompactText(platform::DateTime date);
/// Not set when the eight characters are not all digits.
[[nodiscard]] platform::DateTime CompactTextToDate(std::string_view text);

/// Day, month, year with '.' between them; the day is not checked against the month's length. A year below
/// 100 is widened in `text` itself. The year must lie between 1880 and the current one.
[[nodiscard]] bool IsDottedDate(std::string& text, const platform::Clock& clock);
/// The date at the fixed positions dd.mm.yyyy of a text that passes the test, which may rewrite it; blanks
/// may stand around the numbers. Not set when the test fails, and when there are no numbers at these
/// positions: better no date than one made of pieces of a text with one-digit numbers.
[[nodiscard]] platform::DateTime ReadDottedDate(std::string& text, const platform::Clock& clock);
/// The same; 1 January 1880 where it gives none.
[[nodiscard]] platform::DateTime DottedTextToDate(std::string_view text, const platform::Clock& clock);
/// Both of the following in one; nothing when the test fails.
[[nodiscard]] std::optional<platform::DateTime> ReadColonTime(std::string_view text);
/// Hours, minutes and seconds with ':' between them.
[[nodiscard]] bool IsColonTime(std::string_view text);
/// The time on a day that does not matter (use DateTime::AtTimeOf); 00:00:00 when the test fails.
[[nodiscard]] platform::DateTime ColonTextToTime(std::string_view text);
inline constexpr std::string_view kDefaultDateText = "01.01.1880";
inline constexpr std::string_view kDefaultTimeText = "00:00:00";

bool ChangeToFolder(std::string_view folder);
bool CopyFile(std::string_view source, std::string_view target);
bool MakeFolderPath(std::string_view path);
[[nodiscard]] bool FolderExists(std::string_view path);
[[nodiscard]] bool FileExists(std::string_view path);
bool DeleteFile(std::string_view path);

}  // namespace varnlog::db
