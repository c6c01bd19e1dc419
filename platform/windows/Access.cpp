#include "platform/windows/Access.h"

#include <algorithm>
#include <array>

namespace varnlog::platform {
namespace {

constexpr const wchar_t* kEveryone = L"S-1-1-0";
constexpr const wchar_t* kAnonymous = L"S-1-5-7";
constexpr const wchar_t* kSystem = L"S-1-5-18";
constexpr const wchar_t* kAdministrators = L"S-1-5-32-544";
constexpr const wchar_t* kGuests = L"S-1-5-32-546";

Identifier IdentifierAt(PSID account) {
  if (account == nullptr || IsValidSid(account) == FALSE) return {};
  const auto* const bytes = static_cast<const std::byte*>(account);
  return {bytes, bytes + GetLengthSid(account)};
}

Identifier WellKnown(const wchar_t* text) {
  PSID account = nullptr;
  if (ConvertStringSidToSidW(text, &account) == FALSE) return {};
  const SystemMemory owner(account);
  return IdentifierAt(account);
}

std::vector<const ACE_HEADER*> EntriesOf(PACL list) {
  std::vector<const ACE_HEADER*> entries;
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (GetAce(list, i, &entry) != FALSE) entries.push_back(static_cast<const ACE_HEADER*>(entry));
  }
  return entries;
}

/// A list that is not merely what the folder hands down.
bool IsOwnList(PSECURITY_DESCRIPTOR descriptor, PACL list) {
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  if (list == nullptr || GetSecurityDescriptorControl(descriptor, &control, &revision) == FALSE) return false;
  if ((control & SE_DACL_PROTECTED) != 0) return true;
  return std::ranges::any_of(EntriesOf(list),
                             [](const ACE_HEADER* entry) { return (entry->AceFlags & INHERITED_ACE) == 0; });
}

bool AllowsChange(const ACE_HEADER* entry) {
  constexpr DWORD kChange = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE | WRITE_DAC |
                            WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
  if (entry->AceType != ACCESS_ALLOWED_ACE_TYPE || (entry->AceFlags & INHERIT_ONLY_ACE) != 0) return false;
  return (reinterpret_cast<const ACCESS_ALLOWED_ACE*>(entry)->Mask & kChange) != 0;
}

Identifier AccountIn(const ACE_HEADER* entry) {
  const auto* const allowed = reinterpret_cast<const ACCESS_ALLOWED_ACE*>(entry);
  return IdentifierAt(const_cast<DWORD*>(&allowed->SidStart));
}

}  // namespace

Identifier CurrentUser() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return {};
  const SystemHandle owner(token);
  alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> buffer{};
  DWORD length = 0;
  if (GetTokenInformation(token, TokenUser, buffer.data(), static_cast<DWORD>(buffer.size()), &length) ==
      FALSE)
    return {};
  return IdentifierAt(reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid);
}

bool IsAdministrator(const Identifier& account) {
  static const std::array<Identifier, 2> administrators = {WellKnown(kAdministrators), WellKnown(kSystem)};
  return !account.empty() && std::ranges::find(administrators, account) != administrators.end();
}

Identifier OwnerOf(HANDLE file) {
  PSID account = nullptr;
  SystemMemory descriptor;
  if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &account, nullptr, nullptr, nullptr,
                      descriptor.address()) != ERROR_SUCCESS)
    return {};
  return IdentifierAt(account);
}

void CopyOwnAccess(const std::filesystem::path& model, HANDLE file) {
  PACL list = nullptr;
  SystemMemory descriptor;
  std::wstring name = NativeName(model);
  if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                            nullptr, descriptor.address()) != ERROR_SUCCESS)
    return;
  if (!IsOwnList(*descriptor.address(), list)) return;
  // A share may let its users change files but not who may use them; then a handle with this right is
  // refused.
  constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const SystemHandle access(ReOpenFile(file, READ_CONTROL | WRITE_DAC, kEverybody, 0));
  if (!access) return;
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  GetSecurityDescriptorControl(*descriptor.address(), &control, &revision);
  const SECURITY_INFORMATION kind = (control & SE_DACL_PROTECTED) != 0
                                        ? PROTECTED_DACL_SECURITY_INFORMATION
                                        : UNPROTECTED_DACL_SECURITY_INFORMATION;
  SetSecurityInfo(access.get(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | kind, nullptr, nullptr, list,
                  nullptr);
}

bool OthersMayChange(const std::filesystem::path& path) {
  PACL list = nullptr;
  SystemMemory descriptor;
  std::wstring name = NativeName(path);
  if (GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                            nullptr, descriptor.address()) != ERROR_SUCCESS)
    return true;
  if (list == nullptr) return true;
  const std::array<Identifier, 3> anybody = {WellKnown(kEveryone), WellKnown(kAnonymous), WellKnown(kGuests)};
  return std::ranges::any_of(EntriesOf(list), [&](const ACE_HEADER* entry) {
    return AllowsChange(entry) && std::ranges::find(anybody, AccountIn(entry)) != anybody.end();
  });
}

}  // namespace varnlog::platform
