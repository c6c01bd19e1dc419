#include "db/dao/storage/Workgroup.h"

#include <optional>

#include "db/dao/sqlite/Connection.h"
#include "platform/Sha256.h"

namespace varnlog::dao {

namespace {

// Enough to make guessing slow, too few to be noticed when a session begins.
constexpr unsigned kHashRounds = 20000;

struct Account {
  std::string salt;
  std::string hash;
};

std::optional<Account> ReadAccount(Connection& workgroup, std::string_view user) {
  Statement find(workgroup, "SELECT Salt, PasswordHash FROM Accounts WHERE Name = ?1 COLLATE JET");
  ResetAtEnd reset(find);
  find.Bind(1, user);
  if (!find.Step()) return std::nullopt;
  return Account{std::string(find.Text(0)), std::string(find.Text(1))};
}

std::optional<Account> FindAccount(const std::string& path, std::string_view user,
                                   const std::shared_ptr<EngineState>& state) {
  try {
    Connection workgroup(path, state);
    workgroup.Open({.exclusive = false, .readOnly = true});
    return ReadAccount(workgroup, user);
  } catch (const EngineError& error) {
    throw EngineError(ErrorNumber::kWorkgroupFileMissing,
                      "The workgroup file is missing or cannot be used. " + std::string(error.what()));
  }
}

}  // namespace

std::string PasswordHash(std::string_view salt, std::string_view password) {
  if (password.empty()) return {};
  return platform::PasswordDigest(password, salt, kHashRounds);
}

void CheckAccount(const std::string& path, std::string_view user, std::string_view password,
                  const std::shared_ptr<EngineState>& state) {
  const auto account = FindAccount(path, user, state);
  if (!account || account->hash != PasswordHash(account->salt, password))
    throw EngineError(ErrorNumber::kBadAccount, "The account name or the password is not valid.");
}

}  // namespace varnlog::dao
