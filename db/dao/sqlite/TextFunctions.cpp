#include "db/dao/sqlite/TextFunctions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "db/dao/EngineError.h"
#include "db/dao/sql/LikePattern.h"
#include "db/dao/sqlite/rows/RowCollector.h"
#include "db/dao/text/Collation.h"

namespace varnlog::dao {
namespace {

/// Valid until the value's type or encoding changes; "" for NULL.
std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

int CompareTexts(void* collation, int sizeA, const void* a, int sizeB, const void* b) {
  return static_cast<const Collation*>(collation)->Compare(
      {static_cast<const char*>(a), static_cast<std::size_t>(sizeA)},
      {static_cast<const char*>(b), static_cast<std::size_t>(sizeB)});
}

/// Texts up to this length are put together on the stack and copied into memory the storage has already.
constexpr std::size_t kShortText = 256;

void ConcatenateLong(sqlite3_context* context, int count, sqlite3_value** values) {
  std::size_t size = 0;
  for (int i = 0; i < count; ++i) size += TextOf(values[i]).size();
  auto* joined = static_cast<char*>(sqlite3_malloc64(size));
  if (joined == nullptr) return sqlite3_result_error_nomem(context);
  char* end = joined;
  for (int i = 0; i < count; ++i) {
    const std::string_view text = TextOf(values[i]);
    end = std::copy(text.begin(), text.end(), end);
  }
  sqlite3_result_text64(context, joined, size, sqlite3_free, SQLITE_UTF8);
}

void Concatenate(sqlite3_context* context, int count, sqlite3_value** values) {
  std::array<char, kShortText> joined;
  std::size_t size = 0;
  for (int i = 0; i < count; ++i) {
    const std::string_view text = TextOf(values[i]);
    if (size + text.size() > joined.size()) return ConcatenateLong(context, count, values);
    std::copy(text.begin(), text.end(), joined.data() + size);
    size += text.size();
  }
  sqlite3_result_text(context, joined.data(), static_cast<int>(size), SQLITE_TRANSIENT);
}

void DeletePattern(void* pattern) {
  delete static_cast<LikePattern*>(pattern);
}

void MatchLike(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  const auto isNull = [](sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_NULL; };
  if (isNull(values[0]) || isNull(values[1])) return sqlite3_result_null(context);
  try {
    if (const auto* kept = static_cast<const LikePattern*>(sqlite3_get_auxdata(context, 0))) {
      return sqlite3_result_int(context, kept->Matches(TextOf(values[1])) ? 1 : 0);
    }
    auto pattern = std::make_unique<LikePattern>(TextOf(values[0]));
    sqlite3_result_int(context, pattern->Matches(TextOf(values[1])) ? 1 : 0);
    // The storage may delete it at once, when the pattern differs from row to row.
    sqlite3_set_auxdata(context, 0, pattern.release(), DeletePattern);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (const EngineError& error) {
    sqlite3_result_error(context, error.what(), -1);
  }
}

}  // namespace

void RegisterText(sqlite3* connection) {
  constexpr int kPure = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  auto* collation = const_cast<Collation*>(&Collation::Instance());
  int result =
      sqlite3_create_collation_v2(connection, kCollationName, SQLITE_UTF8, collation, CompareTexts, nullptr);
  if (result == SQLITE_OK) {
    result = sqlite3_create_function_v2(connection, "jet_concat", -1, kPure, nullptr, Concatenate, nullptr,
                                        nullptr, nullptr);
  }
  if (result == SQLITE_OK) {
    result = sqlite3_create_function_v2(connection, "jet_like", 2, kPure, nullptr, MatchLike, nullptr,
                                        nullptr, nullptr);
  }
  if (result != SQLITE_OK) throw EngineError(ErrorNumber::kUnexpected, sqlite3_errmsg(connection));
  RegisterCollector(connection);
}

}  // namespace varnlog::dao
