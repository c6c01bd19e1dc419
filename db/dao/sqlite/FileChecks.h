#pragma once

#include <string>
#include <string_view>

namespace varnlog::dao {

/// The form in which the storage takes a path: absolute, so that a relative one keeps its meaning when the
/// current folder changes, and never one of the storage's special names.
[[nodiscard]] std::string StoragePath(const std::string& path);

/// Throws unless `path` names a file that can be opened: kInvalidPath, kFileNotFound, kCannotOpen and, for
/// writing, kNoPermission.
void RequireUsableFile(const std::string& path, bool forWriting);
/// Throws kServersOwn for a link file.
void RequireFile(const std::string& path);
/// Throws kFileExists, kInvalidPath, kNoPermission.
void RequireFreePath(const std::string& path);

/// As DBEngine::PutJournalAside().
void PutJournalAside(const std::string& path);

/// Throws kUnrecognisedFormat unless these are the first bytes of a database file.
void RequireDatabaseHeader(std::string_view header, const std::string& path);
/// The header of a file that another program left in a journal mode that needs shared memory.
[[nodiscard]] bool HasSharedMemoryJournal(std::string_view header);
inline constexpr int kHeaderSize = 100;
inline constexpr int kChangeCounterOffset = 24;

}  // namespace varnlog::dao
