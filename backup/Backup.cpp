#include "backup/Backup.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "core/LogCheck.h"
#include "db/dao/EngineError.h"
#include "db/dao/ServerLink.h"
#include "platform/Files.h"
#include "platform/SafeFile.h"
#include "platform/Sha256.h"
#include "seals/Verifier.h"

namespace varnlog::backup {

namespace {

namespace fs = std::filesystem;
using dao::EngineError;
using dao::ErrorNumber;

constexpr std::string_view kLogMark = "# log: ";

/// A database open for reading, closed at its end. The engine's failures become exceptions.
class OpenFile {
 public:
  OpenFile(db::CJetEngine& engine, const fs::path& path) : engine_(engine) {
    // Writing is needed where an interrupted change has to be undone first.
    const std::string name = platform::FromPath(path);
    if (engine_.OpenDBInWorkspace(name, false, false) == 0) return;
    if (engine_.LastNumber() == static_cast<std::int32_t>(ErrorNumber::kNoPermission) &&
        engine_.OpenDBInWorkspace(name, false, true) == 0)
      return;
    throw EngineError(static_cast<ErrorNumber>(engine_.LastNumber()), engine_.LastError());
  }
  ~OpenFile() { engine_.CloseDBInWorkspace(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  [[nodiscard]] dao::Database& operator*() const { return *engine_.Database(); }
  [[nodiscard]] dao::Database* operator->() const { return engine_.Database().get(); }

 private:
  db::CJetEngine& engine_;
};

[[noreturn]] void Throw(const std::error_code& error, const fs::path& path) {
  const bool isFull = error == std::errc::no_space_on_device;
  throw EngineError(isFull ? ErrorNumber::kNotEnoughDiskSpace : ErrorNumber::kNoPermission,
                    platform::FromPath(path) + ": " + error.message());
}

std::string DigestOf(const fs::path& path) {
  std::error_code error;
  const platform::File file = platform::File::Open(path, platform::File::Mode::kRead, error);
  platform::Sha256 digest;
  std::vector<char> buffer(std::size_t{1} << 20U);
  std::uint64_t offset = 0;
  while (!error) {
    const std::size_t count = file.ReadAt(offset, buffer, error);
    digest.Add({buffer.data(), count});
    offset += count;
    if (count < buffer.size()) break;
  }
  if (error) Throw(error, path);
  return digest.Hex();
}

struct Noted {
  std::string digest;
  std::string log;
};

std::optional<Noted> ReadDigestFile(const fs::path& backup) {
  constexpr std::uint64_t kMostBytes = 64U << 10U;
  constexpr std::size_t kDigits = 64;
  std::error_code error;
  const auto text = platform::ReadWholeFile(DigestFile(backup), error, kMostBytes);
  if (!text || !text->starts_with(kLogMark)) return std::nullopt;
  const std::size_t end = text->find('\n');
  if (end == std::string::npos || text->size() < end + 1 + kDigits) return std::nullopt;
  return Noted{text->substr(end + 1, kDigits), text->substr(kLogMark.size(), end - kLogMark.size())};
}

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return text;
}

/// What `log: ` names: the same log, whatever it was called relative to.
std::string NameOf(const fs::path& log) {
  std::error_code error;
  const fs::path whole = fs::absolute(log, error);
  return OneLine(platform::FromPath((error ? log : whole).lexically_normal()));
}

void WriteDigestFile(const fs::path& backup, const fs::path& log) {
  const std::error_code error = platform::ReplaceFile(
      DigestFile(backup), std::string(kLogMark) + NameOf(log) + "\n" + DigestOf(backup) + "  " +
                              platform::FromPath(backup.filename()) + "\n");
  if (error) Throw(error, DigestFile(backup));
}

std::vector<std::string> CheckContent(dao::Database& log) {
  std::vector<std::string> wrong = log.Check();
  if (!wrong.empty()) return wrong;
  wrong = core::CheckLog(log);
  if (!seals::HasSeals(log)) return wrong;
  if (const auto all = seals::Verify(log).allFindings; all > 0)
    wrong.push_back("The seals do not fit in " + std::to_string(all) + " places.");
  return wrong;
}

/// The moment in "NAME 2026-11-22 06-12-05.mdb".
std::optional<platform::DateTime> TakenAt(const fs::path& backup, const fs::path& log) {
  constexpr std::size_t kLength = 19;
  const std::string name = platform::FromPath(backup.stem());
  const std::string begin = platform::FromPath(log.stem()) + " ";
  if (backup.extension() != log.extension() || !name.starts_with(begin) ||
      name.size() != begin.size() + kLength)
    return std::nullopt;
  std::string iso = name.substr(begin.size());
  constexpr std::size_t kTime = 11;
  std::replace(iso.begin() + kTime, iso.end(), '-', ':');
  return platform::DateTime::FromIso(iso);
}

}  // namespace

std::string BackupName(const fs::path& log, platform::DateTime taken) {
  std::string when = taken.ToIso();
  std::replace(when.begin(), when.end(), ':', '-');
  return platform::FromPath(log.stem()) + " " + when + platform::FromPath(log.extension());
}

fs::path DigestFile(const fs::path& backup) {
  fs::path digest = backup;
  digest += ".sha256";
  return digest;
}

std::vector<Backup> ListBackups(const fs::path& folder, const fs::path& log) {
  std::vector<Backup> backups;
  std::error_code error;
  for (fs::directory_iterator each(folder, error); !error && each != fs::directory_iterator();
       each.increment(error)) {
    const auto taken = TakenAt(each->path(), log);
    const auto bytes = platform::FileSize(each->path());
    if (!taken || !bytes) continue;
    const auto noted = ReadDigestFile(each->path());
    if (noted && noted->log == NameOf(log)) backups.push_back({each->path(), *taken, *bytes});
  }
  std::ranges::sort(backups, std::greater(), &Backup::taken);
  return backups;
}

Made MakeBackup(db::CJetEngine& engine, const fs::path& log, const fs::path& folder, platform::DateTime now,
                const dao::MaintenanceProgress& progress) {
  std::error_code error;
  if (!fs::is_directory(folder, error))
    throw EngineError(ErrorNumber::kInvalidPath, "There is no folder " + platform::FromPath(folder) + ".");
  Made made;
  made.backup = {folder / platform::ToPath(BackupName(log, now)), now, 0};
  {
    const OpenFile source(engine, log);
    source->CopyTo(platform::FromPath(made.backup.path), progress);
  }
  try {
    WriteDigestFile(made.backup.path, log);
    made.wrong = CheckBackup(engine, made.backup.path);
  } catch (const EngineError&) {
    Remove(made.backup);
    throw;
  }
  made.backup.bytes = platform::FileSize(made.backup.path).value_or(0);
  return made;
}

void Remove(const Backup& backup) {
  // The digest last: without its copy it says what was here.
  if (!platform::RemoveFile(backup.path)) static_cast<void>(platform::RemoveFile(DigestFile(backup.path)));
}

Content ReadContent(db::CJetEngine& engine, const fs::path& file) {
  const OpenFile log(engine, file);
  const auto rows = log->OpenRecordset("SELECT TXray.tXrayTs FROM TXray ORDER BY TXray.tXrayTs DESC;",
                                       dao::RecordsetType::kDynaset);
  Content content;
  if (rows->IsEOF()) return content;
  content.newest = rows->Fields("tXrayTs").Date();
  rows->MoveLast();
  content.exposures = rows->RecordCount();
  return content;
}

std::vector<std::string> CheckBackup(db::CJetEngine& engine, const fs::path& backup) {
  const auto noted = ReadDigestFile(backup);
  if (noted && noted->digest != DigestOf(backup)) return {"It is not what was written: its digest differs."};
  const OpenFile copy(engine, backup);
  std::vector<std::string> wrong = CheckContent(*copy);
  if (!noted) wrong.insert(wrong.begin(), "Its digest is missing.");
  return wrong;
}

fs::path Restore(db::CJetEngine& engine, const fs::path& backup, const fs::path& log,
                 const dao::MaintenanceProgress& progress) {
  const OpenFile copy(engine, backup);
  const std::string path = platform::FromPath(log);
  // Who has it open would go on there, and this workstation in a file.
  if (dao::IsServerLink(path))
    throw EngineError(ErrorNumber::kServersOwn, "A log on a server is restored by the server's own means.");
  if (!platform::FileSize(log)) {
    copy->CopyTo(path, progress);
    return {};
  }
  try {
    return platform::ToPath(copy->CopyInto(path, progress));
  } catch (const EngineError& failure) {
    if (failure.number() != ErrorNumber::kDamaged && failure.number() != ErrorNumber::kUnrecognisedFormat)
      throw;
  }
  // Nothing can be put into such a file.
  std::error_code error;
  const auto kept = platform::KeepAside(log, ".replaced", platform::Keep::kMove, error);
  if (!kept) Throw(error, log);
  copy->CopyTo(path, progress);
  return *kept;
}

}  // namespace varnlog::backup
