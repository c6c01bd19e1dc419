#include "db/dao/postgres/ServerErrors.h"

#include <algorithm>
#include <array>
#include <string>

namespace varnlog::dao {

namespace {

struct StateRule {
  std::string_view state;  // five characters, or two for all of a class that have no line of their own
  ErrorNumber number;
  std::string_view text;  // before the server's own message
};

// Every state of the server, in one place.
constexpr std::array kStateRules = {
    StateRule{"55P03", ErrorNumber::kFileInUse, "Another workstation is writing to the log"},
    StateRule{"40P01", ErrorNumber::kFileInUse, "Another workstation is writing to the log"},
    StateRule{"40001", ErrorNumber::kFileInUse, "Another workstation is writing to the log"},
    StateRule{"23505", ErrorNumber::kDuplicateKey, "The change would make a second row with the same key"},
    StateRule{"23", ErrorNumber::kRuleViolated, "The table does not accept the value"},
    StateRule{"22001", ErrorNumber::kTooLongForField, "The text is too long for the field"},
    StateRule{"22", ErrorNumber::kRuleViolated, "The table does not accept the value"},
    StateRule{"P0001", ErrorNumber::kRuleViolated, "The table does not accept the value"},
    StateRule{"28", ErrorNumber::kBadAccount, "The server does not accept the account"},
    StateRule{"3D", ErrorNumber::kServerDatabaseMissing, "The server has no such database"},
    StateRule{"42501", ErrorNumber::kNoPermission, "The account has no right to do this on the server"},
    StateRule{"25006", ErrorNumber::kReadOnlyDatabase, "The server can only be read"},
    StateRule{"25P02", ErrorNumber::kInvalidTransaction, "The transaction had to be undone after a failure"},
    StateRule{"42P01", ErrorNumber::kTableNotFound, "There is no such table"},
    StateRule{"42703", ErrorNumber::kTooFewParameters, "There is no such field"},
    StateRule{"42", ErrorNumber::kSyntaxError, "The server does not understand the statement"},
    StateRule{"54", ErrorNumber::kSyntaxError, "The statement is too complex"},
    StateRule{"57014", ErrorNumber::kCancelled, "The server stopped the operation"},
    StateRule{"57P", ErrorNumber::kConnectionLost, "The server ended the connection"},
    StateRule{"53100", ErrorNumber::kNotEnoughDiskSpace, "The server's disk is full"},
    StateRule{"53", ErrorNumber::kServerUnreachable, "The server has no room for the operation"},
    StateRule{"58", ErrorNumber::kDiskError, "The server's disk failed"},
    StateRule{"XX001", ErrorNumber::kDamaged, "The server's data are damaged"},
    StateRule{"XX002", ErrorNumber::kDamaged, "An index of the server is damaged"},
    StateRule{"08", ErrorNumber::kConnectionLost, "The connection to the server was lost"},
};

constexpr StateRule kOther = {"", ErrorNumber::kUnexpected, "The operation on the server failed"};

const StateRule& RuleOf(std::string_view state) {
  const auto* const rule = std::ranges::find_if(
      kStateRules, [state](const StateRule& each) { return state.starts_with(each.state); });
  return rule == kStateRules.end() ? kOther : *rule;
}

}  // namespace

ErrorNumber NumberOfState(std::string_view state) {
  return RuleOf(state).number;
}

void ThrowServerError(std::string_view state, std::string_view path, std::string_view detail) {
  const StateRule& rule = RuleOf(state);
  std::string text(rule.text);
  text.append(" ('").append(path).append("': ").append(detail).append(").");
  throw EngineError(rule.number, text);
}

}  // namespace varnlog::dao
