#include <algorithm>
#include <limits>
#include <utility>

#include "platform/Files.h"
#include "platform/windows/Access.h"
#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE HandleOf(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32U) | low;
}

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
  return place;
}

std::optional<BY_HANDLE_FILE_INFORMATION> InformationOf(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION information{};
  if (GetFileInformationByHandle(file, &information) == FALSE) return std::nullopt;
  return information;
}

std::optional<FileIdentity> IdentityIn(const std::optional<BY_HANDLE_FILE_INFORMATION>& information) {
  if (!information) return std::nullopt;
  return FileIdentity{information->dwVolumeSerialNumber,
                      Joined(information->nFileIndexHigh, information->nFileIndexLow)};
}

/// Other reparse points (files kept in a cloud) are files like any other.
bool IsLink(HANDLE file) {
  FILE_ATTRIBUTE_TAG_INFO tag{};
  if (GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) == FALSE) return false;
  return (tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         IsReparseTagNameSurrogate(tag.ReparseTag);
}

DWORD AccessOf(File::Mode mode) {
  return mode == File::Mode::kRead ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
}

/// The system reports every refused folder as a lack of permission.
std::error_code WhyNotOpened(const std::wstring& name) {
  const DWORD code = GetLastError();
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (code == ERROR_ACCESS_DENIED && attributes != INVALID_FILE_ATTRIBUTES &&
      (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    return std::make_error_code(std::errc::is_a_directory);
  return ErrorOf(code);
}

std::error_code ErrorOfKind(HANDLE file, const std::wstring& name, bool refusesLinks) {
  if (GetFileType(file) != FILE_TYPE_DISK) return std::make_error_code(std::errc::not_supported);
  if (!refusesLinks) return {};
  // Opened without following, so a cloud's file would show its own bytes only; but it is seen to be no link.
  const SystemHandle itself(CreateFileW(name.c_str(), FILE_READ_ATTRIBUTES, kEverybody, nullptr,
                                        OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!itself || IsLink(itself.get())) return std::make_error_code(std::errc::too_many_symbolic_link_levels);
  const bool isSame = IdentityIn(InformationOf(itself.get())) == IdentityIn(InformationOf(file));
  return isSame ? std::error_code() : std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

/// The range as the system wants it; a length of 0 is "to the end of any file".
std::uint64_t LockLength(std::uint64_t offset, std::uint64_t length) {
  return length != 0 ? length : static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) - offset;
}

/// The file again under its name; -1 unless it is still the same one.
std::intptr_t OpenAgain(const std::wstring& name, DWORD access, DWORD sharing,
                        const std::optional<FileIdentity>& identity) {
  HANDLE again =
      CreateFileW(name.c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (again == INVALID_HANDLE_VALUE) return -1;
  if (IdentityIn(InformationOf(again)) == identity) return reinterpret_cast<std::intptr_t>(again);
  CloseHandle(again);
  SetLastError(ERROR_FILE_NOT_FOUND);
  return -1;
}

/// As File::Open() opens it; a file that may not be written was opened for reading.
std::intptr_t OpenForAll(const std::wstring& name, const std::optional<FileIdentity>& identity) {
  const std::intptr_t file = OpenAgain(name, GENERIC_READ | GENERIC_WRITE, kEverybody, identity);
  return file != -1 ? file : OpenAgain(name, GENERIC_READ, kEverybody, identity);
}

std::wstring NameOf(HANDLE file) {
  const DWORD room = GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED);
  std::wstring name(room, L'\0');
  name.resize(GetFinalPathNameByHandleW(file, name.data(), room, FILE_NAME_NORMALIZED));
  return name.size() <= room ? name : std::wstring();
}

}  // namespace

File::~File() {
  Close();
}

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    Close();
    handle_ = std::exchange(other.handle_, kNone);
  }
  return *this;
}

void File::Close() {
  if (IsOpen()) CloseHandle(HandleOf(handle_));
  handle_ = kNone;
}

File File::Open(const std::filesystem::path& path, Mode mode, std::error_code& error, Links links) {
  error.clear();
  File file;
  const std::wstring name = NativeName(path);
  const bool isNew = mode == Mode::kCreateNew;
  // A link that leads nowhere must not be taken for a free name.
  const DWORD flags = FILE_ATTRIBUTE_NORMAL | (isNew ? FILE_FLAG_OPEN_REPARSE_POINT : 0U);
  HANDLE handle = CreateFileW(name.c_str(), AccessOf(mode), kEverybody, nullptr,
                              isNew ? CREATE_NEW : OPEN_EXISTING, flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    error = WhyNotOpened(name);
    return file;
  }
  file.handle_ = reinterpret_cast<std::intptr_t>(handle);
  error = ErrorOfKind(handle, name, links == Links::kRefuse && !isNew);
  if (error) file.Close();
  return file;
}

std::uint64_t File::Size(std::error_code& error) const {
  LARGE_INTEGER size{};
  error.clear();
  if (GetFileSizeEx(HandleOf(handle_), &size) == FALSE) error = LastError();
  return error ? 0 : static_cast<std::uint64_t>(size.QuadPart);
}

std::optional<FileIdentity> File::Identity() const {
  return IdentityIn(InformationOf(HandleOf(handle_)));
}

std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path) {
  const SystemHandle file(CreateFileW(NativeName(path).c_str(), FILE_READ_ATTRIBUTES, kEverybody, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return file ? IdentityIn(InformationOf(file.get())) : std::nullopt;
}

std::size_t File::ReadAt(std::uint64_t offset, std::span<char> buffer, std::error_code& error) const {
  constexpr std::size_t kMost = std::size_t{1} << 30U;
  error.clear();
  std::size_t done = 0;
  while (done < buffer.size()) {
    OVERLAPPED place = At(offset + done);
    DWORD got = 0;
    const auto count = static_cast<DWORD>(std::min(buffer.size() - done, kMost));
    if (ReadFile(HandleOf(handle_), buffer.data() + done, count, &got, &place) == FALSE &&
        GetLastError() != ERROR_HANDLE_EOF)
      error = LastError();
    if (error || got == 0) break;
    done += got;
  }
  return done;
}

void File::WriteAt(std::uint64_t offset, std::string_view bytes, std::error_code& error) {
  constexpr std::size_t kMost = std::size_t{1} << 30U;
  error.clear();
  while (!bytes.empty()) {
    OVERLAPPED place = At(offset);
    DWORD put = 0;
    const auto count = static_cast<DWORD>(std::min(bytes.size(), kMost));
    if (WriteFile(HandleOf(handle_), bytes.data(), count, &put, &place) == FALSE) {
      error = LastError();
      return;
    }
    bytes.remove_prefix(put);
    offset += put;
  }
}

void File::Truncate(std::uint64_t size, std::error_code& error) {
  error.clear();
  FILE_END_OF_FILE_INFO end{};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
  if (SetFileInformationByHandle(HandleOf(handle_), FileEndOfFileInfo, &end, sizeof end) == FALSE)
    error = LastError();
}

void File::Flush(std::error_code& error) {
  error.clear();
  if (FlushFileBuffers(HandleOf(handle_)) == FALSE) error = LastError();
}

bool File::IsOwnAndUntouchedFor(std::chrono::seconds time) const {
  const HANDLE file = HandleOf(handle_);
  const auto information = InformationOf(file);
  if (!information || information->nNumberOfLinks != 1) return false;
  if ((information->dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
    return false;
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  constexpr std::uint64_t kTicksASecond = 10'000'000;
  const std::uint64_t changed =
      Joined(information->ftLastWriteTime.dwHighDateTime, information->ftLastWriteTime.dwLowDateTime);
  const std::uint64_t present = Joined(now.dwHighDateTime, now.dwLowDateTime);
  const auto wanted = static_cast<std::uint64_t>(time.count()) * kTicksASecond;
  if (present < changed || present - changed < wanted) return false;
  // What an administrator makes belongs to the administrators' group.
  const Identifier owner = OwnerOf(file);
  return !owner.empty() && (owner == CurrentUser() || IsAdministrator(owner));
}

void File::GiveAccessOf(const std::filesystem::path& model) {
  const DWORD attributes = GetFileAttributesW(NativeName(model).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return;
  CopyOwnAccess(model, HandleOf(handle_));
}

bool File::TryLockRange(std::uint64_t offset, std::uint64_t length, std::error_code& error) {
  error.clear();
  OVERLAPPED place = At(offset);
  const std::uint64_t count = LockLength(offset, length);
  if (LockFileEx(HandleOf(handle_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0,
                 static_cast<DWORD>(count), static_cast<DWORD>(count >> 32U), &place) != FALSE)
    return true;
  if (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING) error = LastError();
  return false;
}

void File::UnlockRange(std::uint64_t offset, std::uint64_t length) {
  OVERLAPPED place = At(offset);
  const std::uint64_t count = LockLength(offset, length);
  UnlockFileEx(HandleOf(handle_), 0, static_cast<DWORD>(count), static_cast<DWORD>(count >> 32U), &place);
}

/// An open handle cannot change what it shares, so the file is closed and opened again. That this is the same
/// file is looked at, for its name may have gone to another one meanwhile.
File::Solitude File::TrySolitude() {
  const auto identity = Identity();
  const std::wstring name = NameOf(HandleOf(handle_));
  if (!identity || name.empty()) return Solitude::kUnsupported;
  Close();
  // Deleting and renaming stay shared, or this program could not rename the file itself.
  handle_ = OpenAgain(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE, identity);
  if (handle_ != kNone) return Solitude::kAlone;
  const bool isShared = GetLastError() == ERROR_SHARING_VIOLATION;
  handle_ = OpenForAll(name, identity);
  return isShared ? Solitude::kShared : Solitude::kUnsupported;
}

void File::EndSolitude() {
  const auto identity = Identity();
  const std::wstring name = NameOf(HandleOf(handle_));
  if (!identity || name.empty()) return;
  Close();
  handle_ = OpenForAll(name, identity);
}

}  // namespace varnlog::platform
