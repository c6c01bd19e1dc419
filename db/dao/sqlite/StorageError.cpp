#include "db/dao/sqlite/StorageError.h"

#include <algorithm>
#include <array>
#include <new>

#include <sqlite3.h>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

namespace {

struct ResultRule {
  int code;  // an extended result code, or a primary one for all that have no line of their own
  ErrorNumber number;
  std::string_view text;  // %f: the file, %d: the storage's own message
};

// Every result of the storage, in one place.
constexpr std::array kResultRules = {
    ResultRule{SQLITE_BUSY, ErrorNumber::kFileInUse,
               "The file '%f' is in use: another user or program has locked it."},
    ResultRule{SQLITE_LOCKED, ErrorNumber::kFileInUse,
               "The file '%f' is in use by another part of this program."},
    ResultRule{SQLITE_PROTOCOL, ErrorNumber::kFileInUse, "The lock on the file '%f' cannot be obtained."},
    ResultRule{SQLITE_NOTADB, ErrorNumber::kUnrecognisedFormat, "The file '%f' is not a database file."},
    ResultRule{SQLITE_FORMAT, ErrorNumber::kUnrecognisedFormat, "The file '%f' is not a database file."},
    ResultRule{SQLITE_CORRUPT, ErrorNumber::kDamaged, "The file '%f' is damaged. Repair it or use a backup."},
    ResultRule{SQLITE_FULL, ErrorNumber::kNotEnoughDiskSpace,
               "There is not enough space on the disk for a change to the file '%f'."},
    ResultRule{SQLITE_READONLY_DBMOVED, ErrorNumber::kFileReplaced,
               "The file '%f' was replaced since it was opened. Open it again."},
    ResultRule{SQLITE_READONLY_ROLLBACK, ErrorNumber::kNoPermission,
               "An interrupted change must be undone in the file '%f', but there is no permission to write."},
    ResultRule{SQLITE_READONLY, ErrorNumber::kNoPermission,
               "There is no permission to change the file '%f' or its folder."},
    ResultRule{SQLITE_PERM, ErrorNumber::kNoPermission, "There is no permission to use the file '%f'."},
    ResultRule{SQLITE_AUTH, ErrorNumber::kNoPermission, "There is no permission to use the file '%f'."},
    ResultRule{SQLITE_CANTOPEN_ISDIR, ErrorNumber::kCannotOpen, "'%f' is a folder, not a file."},
    ResultRule{SQLITE_CANTOPEN, ErrorNumber::kNoPermission,
               "There is no permission to use the file '%f' or to write to its folder."},
    ResultRule{SQLITE_CONSTRAINT_UNIQUE, ErrorNumber::kDuplicateKey,
               "The change would make a second row with the same key (%d)."},
    ResultRule{SQLITE_CONSTRAINT_PRIMARYKEY, ErrorNumber::kDuplicateKey,
               "The change would make a second row with the same key (%d)."},
    ResultRule{SQLITE_CONSTRAINT_ROWID, ErrorNumber::kDuplicateKey,
               "The change would make a second row with the same key (%d)."},
    ResultRule{SQLITE_CONSTRAINT, ErrorNumber::kRuleViolated, "The table does not accept the value (%d)."},
    ResultRule{SQLITE_MISMATCH, ErrorNumber::kRuleViolated, "The table does not accept the value (%d)."},
    ResultRule{SQLITE_TOOBIG, ErrorNumber::kTooLongForField, "The text is too long for the field."},
    ResultRule{SQLITE_INTERRUPT, ErrorNumber::kCancelled, "The operation was cancelled."},
    ResultRule{SQLITE_IOERR, ErrorNumber::kDiskError, "The disk failed while the file '%f' was used (%d)."},
};

struct MessageRule {
  std::string_view start;  // of the storage's message for its unspecific result
  ErrorNumber number;
  std::string_view text;  // %d: what follows the start
};

constexpr std::array kMessageRules = {
    MessageRule{"no such table: ", ErrorNumber::kTableNotFound, "There is no table or query '%d'."},
    MessageRule{"no such column: ", ErrorNumber::kTooFewParameters,
                "'%d' is no field; too few parameters were given."},
    MessageRule{"duplicate column name: ", ErrorNumber::kObjectInvalid,
                "The table has a field '%d' already."},
    MessageRule{"too many terms", ErrorNumber::kSyntaxError, "The statement is too complex."},
    MessageRule{"Expression tree is too large", ErrorNumber::kSyntaxError, "The statement is too complex."},
    MessageRule{"parser stack overflow", ErrorNumber::kSyntaxError, "The statement is too complex."},
    MessageRule{"LIKE or GLOB pattern too complex", ErrorNumber::kSyntaxError,
                "The search pattern is too complex."},
};

std::string Filled(std::string_view text, std::string_view file, std::string_view detail) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isMark = text[i] == '%' && i + 1 < text.size();
    if (isMark && text[i + 1] == 'f') {
      filled += file;
      ++i;
    } else if (isMark && text[i + 1] == 'd') {
      filled += detail;
      ++i;
    } else {
      filled += text[i];
    }
  }
  return filled;
}

[[noreturn]] void ThrowByMessage(std::string_view file, std::string_view detail) {
  for (const MessageRule& rule : kMessageRules)
    if (detail.starts_with(rule.start))
      throw EngineError(rule.number, Filled(rule.text, file, detail.substr(rule.start.size())));
  throw EngineError(ErrorNumber::kUnexpected,
                    Filled("The operation on the file '%f' failed (%d).", file, detail));
}

}  // namespace

void ThrowStorageError(int code, std::string_view file, std::string_view detail) {
  if (code == SQLITE_NOMEM || code == SQLITE_IOERR_NOMEM) throw std::bad_alloc();
  for (const int wanted : {code, code & 0xff}) {
    const auto* const rule = std::find_if(kResultRules.begin(), kResultRules.end(),
                                          [&](const ResultRule& each) { return each.code == wanted; });
    if (rule != kResultRules.end()) throw EngineError(rule->number, Filled(rule->text, file, detail));
  }
  ThrowByMessage(file, detail);
}

std::string FileText(std::string_view before, std::string_view file, std::string_view after) {
  std::string text(before);
  text.append("'").append(file).append("'").append(after);
  return text;
}

}  // namespace varnlog::dao
