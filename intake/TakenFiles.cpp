#include "intake/TakenFiles.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "platform/SafeFile.h"

namespace varnlog::intake {
namespace {

constexpr std::string_view kSuffix = ".taken";

std::uint64_t NowStamp() {
  using std::chrono::system_clock;
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch()).count());
}

std::optional<std::uint64_t> Number(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

/// STAMP-FROM out of NAME.STAMP-FROM.taken.
std::optional<TakenFile> ParseName(std::string_view name, std::string_view exchangeName) {
  if (name.size() <= exchangeName.size() + kSuffix.size() + 1) return std::nullopt;
  if (!name.starts_with(exchangeName) || !name.ends_with(kSuffix)) return std::nullopt;
  if (name[exchangeName.size()] != '.') return std::nullopt;
  name.remove_prefix(exchangeName.size() + 1);
  name.remove_suffix(kSuffix.size());
  const std::size_t dash = name.find('-');
  if (dash == std::string_view::npos) return std::nullopt;
  const auto stamp = Number(name.substr(0, dash));
  const auto from = Number(name.substr(dash + 1));
  if (!stamp || !from) return std::nullopt;
  TakenFile taken;
  taken.stamp = *stamp;
  taken.from = *from;
  return taken;
}

std::filesystem::path TakenPath(const std::filesystem::path& exchange, std::uint64_t stamp,
                                std::uint64_t from) {
  std::filesystem::path path = exchange;
  path += "." + std::to_string(stamp) + "-" + std::to_string(from) + std::string(kSuffix);
  return path;
}

std::uint64_t NextStamp(const std::filesystem::path& exchange) {
  std::error_code ignored;
  const std::vector<TakenFile> earlier = ListTakenFiles(exchange, ignored);
  return earlier.empty() ? NowStamp() : std::max(NowStamp(), earlier.back().stamp + 1);
}

bool IsOldEnough(const TakenFile& taken, std::chrono::milliseconds grace) {
  const std::uint64_t now = NowStamp();
  // A stamp from the future: the clock was set back. A minute of that is no reason to keep the file for ever.
  constexpr std::uint64_t kClockError = 60'000;
  if (taken.stamp > now) return taken.stamp - now > kClockError;
  return now - taken.stamp >= static_cast<std::uint64_t>(grace.count());
}

/// Another run has just given it another name, or somebody has put something else there.
bool IsNoFile(const std::error_code& why) {
  return why == std::errc::no_such_file_or_directory || why == std::errc::is_a_directory ||
         why == std::errc::not_supported;
}

/// A file system that cannot tell who has a file open gives everybody a day to close it.
constexpr std::chrono::hours kGraceWithoutSolitude{24};

}  // namespace

std::vector<TakenFile> ListTakenFiles(const std::filesystem::path& exchange, std::error_code& error) {
  std::vector<TakenFile> found;
  const std::string exchangeName = platform::FromPath(exchange.filename());
  std::filesystem::path folder = exchange.parent_path();
  if (folder.empty()) folder = ".";
  error.clear();
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::optional<TakenFile> taken = ParseName(platform::FromPath(entry->path().filename()), exchangeName);
    if (!taken) continue;
    std::error_code why;
    taken->path = entry->path();
    taken->size = std::filesystem::file_size(taken->path, why);
    if (IsNoFile(why)) continue;
    // Not to know whether something is pending in it is not to know that nothing is.
    if (why) {
      error = why;
      break;
    }
    found.push_back(std::move(*taken));
  }
  if (error == std::errc::no_such_file_or_directory) error.clear();
  std::ranges::sort(found, {}, &TakenFile::stamp);
  return found;
}

std::optional<TakenFile> MoveAside(const std::filesystem::path& exchange, std::error_code& error) {
  TakenFile taken;
  taken.stamp = NextStamp(exchange);
  taken.path = TakenPath(exchange, taken.stamp, taken.from);
  error = platform::RenameFile(exchange, taken.path, platform::IfTaken::kFail);
  if (error) return std::nullopt;
  taken.size = platform::FileSize(taken.path).value_or(0);
  return taken;
}

std::filesystem::path RestPath(std::filesystem::path exchange) {
  exchange += ".rest";
  return exchange;
}

std::error_code MakeTakenFile(const std::filesystem::path& exchange, const FilePiece& bytes) {
  // First under a name that does not change, so that what a crash leaves of it is found and swept.
  const std::filesystem::path rest = RestPath(exchange);
  std::error_code error;
  platform::NewFile made(rest, error, exchange);
  if (!error) error = CopyBytes(bytes, made.file(), 0);
  if (!error) error = made.TakePlace(platform::IfTaken::kReplace);
  if (error) return error;
  return platform::RenameFile(rest, TakenPath(exchange, NextStamp(exchange), 0), platform::IfTaken::kFail);
}

bool AccountFor(const std::filesystem::path& exchange, const TakenFile& taken, std::uint64_t from) {
  return taken.from == from ||
         !platform::RenameFile(taken.path, TakenPath(exchange, taken.stamp, from), platform::IfTaken::kFail);
}

bool IsOutOfReach(const TakenFile& taken, std::chrono::milliseconds grace) {
  using Solitude = platform::File::Solitude;
  if (!IsOldEnough(taken, grace)) return false;
  std::error_code error;
  platform::File file = platform::File::Open(taken.path, platform::File::Mode::kReadWrite, error);
  const Solitude solitude = error ? Solitude::kUnsupported : file.TrySolitude();
  if (solitude == Solitude::kUnsupported) return IsOldEnough(taken, kGraceWithoutSolitude);
  file.EndSolitude();
  return solitude == Solitude::kAlone;
}

void SweepTakenFiles(const std::filesystem::path& exchange, std::chrono::milliseconds grace) {
  std::error_code ignored;
  for (const TakenFile& taken : ListTakenFiles(exchange, ignored)) {
    if (taken.IsPending() || !IsOutOfReach(taken, grace)) continue;
    // Out of reach is for ever, but the size is of before: look once more.
    const auto size = platform::FileSize(taken.path);
    if (!size || *size > taken.from) continue;
    static_cast<void>(platform::RemoveFile(taken.path));
  }
}

}  // namespace varnlog::intake
