#include "platform/Author.h"

#include <array>
#include <charconv>

#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

std::wstring AccountName() {
  std::array<wchar_t, 257> name{};
  auto length = static_cast<DWORD>(name.size());
  return GetUserNameW(name.data(), &length) != FALSE ? std::wstring(name.data()) : std::wstring();
}

/// A domain knows its users' names; a workstation keeps those of its own accounts.
std::string FullName(const std::wstring& account) {
  std::array<wchar_t, 512> name{};
  auto length = static_cast<ULONG>(name.size());
  if (GetUserNameExW(NameDisplay, name.data(), &length) != FALSE) return Narrow({name.data(), length});
  BYTE* buffer = nullptr;
  std::string found;
  if (NetUserGetInfo(nullptr, account.c_str(), 2, &buffer) == NERR_Success)
    found = Narrow(reinterpret_cast<const USER_INFO_2*>(buffer)->usri2_full_name);
  if (buffer != nullptr) NetApiBufferFree(buffer);
  return found;
}

std::string Workstation() {
  std::array<wchar_t, 256> name{};
  auto length = static_cast<DWORD>(name.size());
  return GetComputerNameExW(ComputerNamePhysicalDnsHostname, name.data(), &length) != FALSE
             ? Narrow({name.data(), length})
             : std::string();
}

/// The process's number and when it began, for a number is given out again.
std::string RunOf(DWORD number, HANDLE process) {
  FILETIME begun{};
  FILETIME unused{};
  if (GetProcessTimes(process, &begun, &unused, &unused, &unused) == FALSE) return {};
  const std::uint64_t ticks = (std::uint64_t{begun.dwHighDateTime} << 32U) | begun.dwLowDateTime;
  return std::to_string(number) + "-" + std::to_string(ticks);
}

}  // namespace

Author CurrentAuthor() {
  Author author;
  const std::wstring account = AccountName();
  author.account = Narrow(account);
  author.fullName = FullName(account);
  author.workstation = Workstation();
  author.run = RunOf(GetCurrentProcessId(), GetCurrentProcess());
  return author;
}

bool IsRunning(std::string_view run) {
  DWORD number = 0;
  const auto [end, error] = std::from_chars(run.data(), run.data() + run.size(), number);
  if (error != std::errc() || number == 0) return false;
  const SystemHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, number));
  // There is one, of somebody else, that cannot be asked: it may be the run.
  if (!process) return GetLastError() == ERROR_ACCESS_DENIED;
  return WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT && RunOf(number, process.get()) == run;
}

}  // namespace varnlog::platform
