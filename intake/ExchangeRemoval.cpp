#include "intake/ExchangeRemoval.h"

#include <utility>

#include "intake/TakenFiles.h"

namespace varnlog::intake {

using platform::File;

namespace {

/// The bytes that are written to, and only these, are locked: others may read and append elsewhere.
class RangeLock {
 public:
  RangeLock(File& file, std::uint64_t length) : file_(file), length_(length) {
    std::error_code ignored;
    held_ = file.TryLockRange(0, length, ignored);
  }
  ~RangeLock() {
    if (held_) file_.UnlockRange(0, length_);
  }
  RangeLock(const RangeLock&) = delete;
  RangeLock& operator=(const RangeLock&) = delete;
  [[nodiscard]] bool IsHeld() const { return held_; }

 private:
  File& file_;
  std::uint64_t length_;
  bool held_ = false;
};

}  // namespace

ExchangeRemoval::ExchangeRemoval(const std::filesystem::path& exchange, RunOptions options)
    : exchange_(exchange), options_(std::move(options)), journal_(exchange_) {}

ExchangeRemoval::Solitude ExchangeRemoval::WaitForSolitude(File& file) const {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + options_.patience;
  for (;;) {
    const Solitude solitude = file.TrySolitude();
    if (solitude != Solitude::kShared || steady_clock::now() >= end) return solitude;
    options_.Wait();
  }
}

/// `file` has been checked and is still open, so that nobody can have shifted its bytes since; but the name
/// may have gone to another one. What has been moved can no longer be mistaken.
RunTimeError ExchangeRemoval::TakeAside(const File& file, std::uint64_t count) {
  std::error_code error;
  const std::optional<TakenFile> taken = MoveAside(exchange_, error);
  if (error == std::errc::device_or_resource_busy) return kPermissionDenied;
  if (!taken) return kPathAccess;
  options_.Reached(RunStep::kMovedAside);
  if (platform::IdentityOf(taken->path) != file.Identity()) return kInvalidCall;
  if (!AccountFor(exchange_, *taken, count)) return kPathAccess;
  options_.Reached(RunStep::kAccountedFor);
  return kNoError;
}

RunTimeError ExchangeRemoval::Check(const File& file, std::uint64_t count,
                                    const std::optional<ReadBytes>& read) {
  if (!read) return kNoError;
  const auto identity = file.Identity();
  const auto sum = SumOf({&file, read->begin, count - read->begin});
  if (!identity || !sum) return kDeviceError;
  return *identity == read->file && *sum == read->sum ? kNoError : kInvalidCall;
}

RunTimeError ExchangeRemoval::RemoveAlone(File& file, std::uint64_t count,
                                          const std::optional<ReadBytes>& read) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return kDeviceError;
  if (size < count) return kInvalidCall;
  // The safe copy lacks what an earlier run has read, and an interrupted shift could not be told from it.
  if (size == count || (read && read->begin > 0)) return TakeAside(file, count);
  // Whoever moved it away had it open, and nobody has now.
  if (platform::IdentityOf(exchange_) != file.Identity()) return kInvalidCall;
  const RangeLock lock(file, size - count);
  if (!lock.IsHeld()) return kDeviceError;
  if (!journal_.Shift(file, count, options_)) return kNoError;
  // A full disk has no room for the journal, but a new name costs nothing.
  return journal_.Exists() ? kDeviceError : TakeAside(file, count);
}

RunTimeError ExchangeRemoval::RemoveInCompany(File& file, std::uint64_t count) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return kDeviceError;
  if (size < count) return kInvalidCall;
  if (size == count) return TakeAside(file, count);
  const RangeLock lock(file, size - count);
  return lock.IsHeld() ? TakeAside(file, count) : kDeviceError;
}

RunTimeError ExchangeRemoval::Remove(std::uint64_t count, const std::optional<ReadBytes>& read) {
  const auto size = platform::FileSize(exchange_);
  if (!size) return kFileNotFound;
  if (*size < count) return kInvalidCall;
  if (count == 0 && *size > 0) return kNoError;
  if (!Recover()) return kDeviceError;
  std::error_code error;
  File file = File::Open(exchange_, File::Mode::kReadWrite, error, File::Links::kRefuse);
  if (error == std::errc::too_many_symbolic_link_levels) return kPathAccess;
  // Who may not write the file may still be allowed to rename it.
  if (error) file = File::Open(exchange_, File::Mode::kRead, error, File::Links::kRefuse);
  if (error) return kDeviceError;
  const Solitude solitude = WaitForSolitude(file);
  RunTimeError result = Check(file, count, read);
  if (result == kNoError) {
    result = solitude == Solitude::kAlone ? RemoveAlone(file, count, read) : RemoveInCompany(file, count);
  }
  file.EndSolitude();
  return result;
}

bool ExchangeRemoval::Recover() {
  if (!journal_.Exists()) return true;
  std::error_code error;
  File file = File::Open(exchange_, File::Mode::kReadWrite, error, File::Links::kRefuse);
  if (error == std::errc::no_such_file_or_directory) return !journal_.FinishWithoutFile();
  if (error) return false;
  const Solitude solitude = WaitForSolitude(file);
  if (solitude == Solitude::kShared) return false;
  error = journal_.Finish(file, options_);
  file.EndSolitude();
  return !error;
}

ExchangeRemoval::Realigned ExchangeRemoval::RealignAlone(File& file, const FilePiece& read) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error) return Realigned::kFailed;
  if (size <= read.length) return Realigned::kNotNeeded;
  const FilePiece front{&file, 0, read.length};
  const FilePiece rest{&file, read.length, size - read.length};
  const std::optional<bool> isUntouched = SameBytes(front, read);
  const std::optional<bool> isHalfShifted = IsMixOf(front, read, rest);
  if (!isUntouched || !isHalfShifted) return Realigned::kFailed;
  if (*isUntouched || !*isHalfShifted) return Realigned::kNotNeeded;
  const RangeLock lock(file, rest.length);
  if (!lock.IsHeld()) return Realigned::kFailed;
  return journal_.Shift(file, read.length, options_) ? Realigned::kFailed : Realigned::kDone;
}

ExchangeRemoval::Realigned ExchangeRemoval::Realign(const FilePiece& read) {
  std::error_code error;
  File file = File::Open(exchange_, File::Mode::kReadWrite, error, File::Links::kRefuse);
  if (error == std::errc::no_such_file_or_directory) return Realigned::kNotNeeded;
  if (error || WaitForSolitude(file) == Solitude::kShared) return Realigned::kFailed;
  const Realigned result = RealignAlone(file, read);
  file.EndSolitude();
  return result;
}

}  // namespace varnlog::intake
