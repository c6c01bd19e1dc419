#include "platform/SafeFile.h"

#include <random>
#include <string>
#include <vector>

#include "platform/FileNames.h"

namespace varnlog::platform {
namespace {

namespace fs = std::filesystem;

/// Left-overs are recognised by it.
constexpr std::string_view kUnfinished = ".new-";

/// A file being written is held by a lock beyond its end, which a crash gives back.
constexpr std::uint64_t kBeyondAnyFile = 1ULL << 40U;

fs::path WithSuffix(fs::path path, std::string_view suffix) {
  return path += suffix;
}

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

std::string RandomDigits() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kCount = 16;
  std::random_device random;
  std::string digits(kCount, '0');
  for (char& digit : digits) digit = kDigits[random() % kDigits.size()];
  return digits;
}

std::error_code WhyNotReplaceable(const fs::path& target) {
  std::error_code error;
  const fs::file_status named = fs::symlink_status(target, error);
  if (!fs::exists(named) || IsLink(target)) return {};
  if (fs::is_directory(named)) return std::make_error_code(std::errc::is_a_directory);
  if (!fs::is_regular_file(named)) return std::make_error_code(std::errc::not_supported);
  // The folder alone decides whether a rename is allowed; a file that may not be written must still be kept.
  return IsWritable(target) ? std::error_code() : std::make_error_code(std::errc::permission_denied);
}

/// A link says nothing about who may see what will stand in its place.
fs::path AccessModel(const fs::path& target, const fs::path& model) {
  std::error_code error;
  if (!model.empty() && fs::is_regular_file(model, error)) return model;
  return fs::is_regular_file(fs::symlink_status(target, error)) ? target : FolderOf(target);
}

std::error_code CopyContent(const File& source, File& target) {
  constexpr std::size_t kPortion = std::size_t{1} << 18U;
  std::error_code error;
  std::vector<char> buffer(kPortion);
  std::uint64_t offset = 0;
  for (;;) {
    const std::size_t got = source.ReadAt(offset, buffer, error);
    if (error || got == 0) return error;
    target.WriteAt(offset, {buffer.data(), got}, error);
    if (error) return error;
    offset += got;
  }
}

}  // namespace

NewFile::NewFile(const fs::path& target, std::error_code& error, const fs::path& model) : target_(target) {
  error = WhyNotReplaceable(target);
  if (error) return;
  SweepUnfinished(target);
  do {
    path_ = WithSuffix(target, std::string(kUnfinished) + RandomDigits());
    file_ = File::Open(path_, File::Mode::kCreateNew, error);
  } while (error == std::errc::file_exists);
  if (error) {
    path_.clear();
    return;
  }
  // Where locks are not to be had nobody sweeps either.
  std::error_code ignored;
  static_cast<void>(TryHold(file_, ignored));
  file_.GiveAccessOf(AccessModel(target, model));
}

NewFile::~NewFile() {
  if (!path_.empty()) static_cast<void>(RemoveFile(path_));
}

std::error_code NewFile::TakePlace(IfTaken ifTaken) {
  std::error_code error;
  file_.Flush(error);
  if (error) return error;
  error = GiveName(path_, target_, ifTaken);
  if (error) return error;
  path_.clear();
  return FlushFolder(FolderOf(target_));
}

bool TryHold(File& file, std::error_code& error) {
  return file.TryLockRange(kBeyondAnyFile, 1, error);
}

std::error_code ReplaceFile(const fs::path& path, std::string_view content) {
  std::error_code error;
  NewFile made(BehindLinks(path), error);
  if (!error) made.file().WriteAt(0, content, error);
  return error ? error : made.TakePlace(IfTaken::kReplace);
}

std::error_code CopyWholeFile(const fs::path& source, const fs::path& target, IfTaken ifTaken,
                              const fs::path& model) {
  std::error_code error;
  const File from = File::Open(source, File::Mode::kRead, error);
  if (error) return error;
  // Asked first only to spare a long copy; what counts is the rename.
  if (ifTaken == IfTaken::kFail && fs::exists(fs::symlink_status(target, error))) {
    return std::make_error_code(std::errc::file_exists);
  }
  NewFile copy(target, error, model);
  if (!error) error = CopyContent(from, copy.file());
  return error ? error : copy.TakePlace(ifTaken);
}

std::error_code WriteWholeFile(const fs::path& target, std::string_view content, IfTaken ifTaken,
                               const fs::path& model) {
  std::error_code error;
  NewFile made(target, error, model);
  if (!error) made.file().WriteAt(0, content, error);
  return error ? error : made.TakePlace(ifTaken);
}

std::error_code RenameFile(const fs::path& source, const fs::path& target, IfTaken ifTaken) {
  const std::error_code error = GiveName(source, target, ifTaken);
  return error ? error : FlushFolder(FolderOf(target));
}

std::error_code GiveSecondName(const fs::path& path, const fs::path& second) {
  const std::error_code error = AddName(BehindLinks(path), second);
  if (!error) return FlushFolder(FolderOf(second));
  if (error == std::errc::file_exists) return error;
  return CopyWholeFile(path, second, IfTaken::kFail, path);
}

std::optional<fs::path> KeepAside(const fs::path& path, std::string_view suffix, Keep how,
                                  std::error_code& error) {
  for (int number = 1;; ++number) {
    fs::path kept = WithSuffix(path, suffix);
    if (number > 1) kept += std::to_string(number);
    error = how == Keep::kMove ? RenameFile(path, kept, IfTaken::kFail) : GiveSecondName(path, kept);
    if (!error) return kept;
    if (error != std::errc::file_exists) return std::nullopt;
  }
}

std::error_code RemoveFile(const fs::path& path, std::initializer_list<std::string_view> companions) {
  bool removed = false;
  for (const std::string_view companion : companions) {
    const std::error_code error = RemoveName(WithSuffix(path, companion));
    if (error && error != std::errc::no_such_file_or_directory) return error;
    removed = removed || !error;
  }
  // Their removal must not reach the disk after that of the file.
  if (removed) {
    const std::error_code error = FlushFolder(FolderOf(path));
    if (error) return error;
  }
  const std::error_code error = RemoveName(path);
  if (error == std::errc::no_such_file_or_directory) return {};
  return error ? error : FlushFolder(FolderOf(path));
}

void SweepUnfinished(const fs::path& target) {
  const std::string start = FromPath(target.filename()) + std::string(kUnfinished);
  std::error_code error;
  fs::directory_iterator entry(FolderOf(target), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code why;
    if (!FromPath(entry->path().filename()).starts_with(start)) continue;
    if (!fs::is_regular_file(entry->symlink_status(why))) continue;
    File left = File::Open(entry->path(), File::Mode::kReadWrite, why, File::Links::kRefuse);
    if (!why && TryHold(left, why) && !why) {
      static_cast<void>(RemoveName(entry->path()));
    }
  }
}

void SweepFormer(const fs::path& path, const std::function<bool(const File&)>& isLeftOver) {
  constexpr std::chrono::hours kDay(24);
  std::error_code error;
  File left = File::Open(path, File::Mode::kReadWrite, error, File::Links::kRefuse);
  if (error || !left.IsOwnAndUntouchedFor(kDay) || !isLeftOver(left)) return;
  if (left.TrySolitude() != File::Solitude::kShared && left.Identity() == IdentityOf(path))
    static_cast<void>(RemoveName(path));
  left.EndSolitude();
}

}  // namespace varnlog::platform
