#include "exports/ZipWriter.h"

#include <memory>
#include <minizip/zip.h>
#include <vector>

#include "platform/Files.h"

namespace varnlog::exports {

namespace {

constexpr int kEncryptionVersion = 0;  // not encrypted
constexpr unsigned long kUtf8Name = 1U << 11U;
constexpr std::size_t kPortion = std::size_t{1} << 18U;

struct CloseArchive {
  void operator()(void* archive) const { zipClose(archive, nullptr); }
};

void Require(int result, const std::string& name) {
  if (result != ZIP_OK) throw ZipError(name + ": " + std::to_string(result));
}

zip_fileinfo InfoOf(platform::DateTime time) {
  // The library has them without or with a sign, as it was built.
  const auto number = [](int value) { return static_cast<decltype(tm_zip::tm_sec)>(value); };
  zip_fileinfo info{};
  info.tmz_date.tm_sec = number(time.Second());
  info.tmz_date.tm_min = number(time.Minute());
  info.tmz_date.tm_hour = number(time.Hour());
  info.tmz_date.tm_mday = number(time.Day());
  info.tmz_date.tm_mon = number(time.Month() - 1);
  info.tmz_date.tm_year = number(time.Year());
  return info;
}

void AddFile(zipFile archive, const ZipEntry& entry, platform::DateTime time) {
  std::error_code error;
  const platform::File file = platform::File::Open(entry.file, platform::File::Mode::kRead, error);
  if (error) throw ZipError(entry.name + ": " + error.message());
  const zip_fileinfo info = InfoOf(time);
  Require(zipOpenNewFileInZip4_64(archive, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                                  Z_DEFLATED, Z_DEFAULT_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL,
                                  Z_DEFAULT_STRATEGY, nullptr, 0, kEncryptionVersion, kUtf8Name, 1),
          entry.name);
  std::vector<char> buffer(kPortion);
  for (std::uint64_t at = 0;;) {
    const std::size_t got = file.ReadAt(at, buffer, error);
    if (error) throw ZipError(entry.name + ": " + error.message());
    if (got == 0) break;
    Require(zipWriteInFileInZip(archive, buffer.data(), static_cast<unsigned>(got)), entry.name);
    at += got;
  }
  Require(zipCloseFileInZip(archive), entry.name);
}

}  // namespace

void WriteArchive(const std::filesystem::path& archive, std::span<const ZipEntry> entries,
                  platform::DateTime time) {
  const std::string name = platform::FromPath(archive);
  std::unique_ptr<void, CloseArchive> zip(zipOpen64(name.c_str(), APPEND_STATUS_CREATE));
  if (!zip) throw ZipError(name);
  for (const ZipEntry& entry : entries) AddFile(zip.get(), entry, time);
  Require(zipClose(zip.release(), nullptr), name);
}

}  // namespace varnlog::exports
