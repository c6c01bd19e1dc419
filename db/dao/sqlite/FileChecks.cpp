#include "db/dao/sqlite/FileChecks.h"

#include <filesystem>

#include "db/dao/sqlite/StorageError.h"
#include "platform/Files.h"
#include "platform/SafeFile.h"

namespace varnlog::dao {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMagic("SQLite format 3\0", 16);

fs::path Absolute(const std::string& path) {
  std::error_code error;
  const fs::path given = platform::ToPath(path);
  fs::path absolute = fs::absolute(given, error);
  return error ? given : absolute;
}

void RequireFolder(const fs::path& file, const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(file.parent_path(), error))
    throw EngineError(ErrorNumber::kInvalidPath,
                      FileText("", path, " is not a valid path: its folder does not exist."));
}

}  // namespace

std::string StoragePath(const std::string& path) {
  return platform::FromPath(Absolute(path));
}

void RequireUsableFile(const std::string& path, bool forWriting) {
  const fs::path file = Absolute(path);
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (status.type() == fs::file_type::not_found) {
    RequireFolder(file, path);
    throw EngineError(ErrorNumber::kFileNotFound, FileText("The file ", path, " does not exist."));
  }
  if (error)
    throw EngineError(ErrorNumber::kNoPermission, FileText("The file ", path, " cannot be reached."));
  if (status.type() == fs::file_type::directory)
    throw EngineError(ErrorNumber::kCannotOpen, FileText("", path, " is a folder, not a file."));
  if (status.type() != fs::file_type::regular)
    throw EngineError(ErrorNumber::kCannotOpen, FileText("", path, " is not a file that can be opened."));
  // Changing a file takes a journal beside it, so the folder counts too.
  if (forWriting && (!platform::IsWritable(file) || !platform::IsWritable(file.parent_path())))
    throw EngineError(ErrorNumber::kNoPermission,
                      FileText("There is no permission to change the file ", path, " or its folder."));
}

void RequireFreePath(const std::string& path) {
  const fs::path file = Absolute(path);
  std::error_code error;
  RequireFolder(file, path);
  const fs::file_type type = fs::symlink_status(file, error).type();
  if (type == fs::file_type::none)
    throw EngineError(ErrorNumber::kNoPermission, FileText("The file ", path, " cannot be reached."));
  if (type != fs::file_type::not_found)
    throw EngineError(ErrorNumber::kFileExists, FileText("The file ", path, " exists already."));
  if (!platform::IsWritable(file.parent_path()))
    throw EngineError(ErrorNumber::kNoPermission,
                      FileText("There is no permission to make the file ", path, "."));
}

void PutJournalAside(const std::string& path) {
  const fs::path journal = platform::BehindLinks(Absolute(path)) += "-journal";
  std::error_code error;
  if (!fs::exists(fs::symlink_status(journal, error))) return;
  if (!platform::KeepAside(journal, ".aside", platform::Keep::kMove, error))
    throw EngineError(ErrorNumber::kNoPermission, FileText("The file ", platform::FromPath(journal),
                                                           " of an earlier file cannot be put aside."));
}

void RequireDatabaseHeader(std::string_view header, const std::string& path) {
  if (header.starts_with(kMagic)) return;
  const std::string_view jetMark = header.substr(std::min<std::size_t>(header.size(), 4), 15);
  if (jetMark == "Standard Jet DB" || jetMark == "Standard ACE DB")
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      FileText("The file ", path, " is a database of the old format. Convert it first."));
  throw EngineError(ErrorNumber::kUnrecognisedFormat,
                    FileText("The file ", path, " is not a database of a format that is known here."));
}

bool HasSharedMemoryJournal(std::string_view header) {
  return header.size() >= 20 && header[18] == 2 && header[19] == 2;
}

}  // namespace varnlog::dao
