#pragma once

#include <filesystem>
#include <string_view>

#include "db/dao/DBEngine.h"

namespace varnlog::legacy {

/// True when a file that begins with these bytes is a Jet database.
[[nodiscard]] bool IsJetStart(std::string_view start);

/// Makes the tables of a Jet file in the empty database `target` and fills them, so that an old database that
/// is only read behaves like any other. A counter becomes the table's key; an index whose name is taken by
/// another table's, or whose columns are left out, is not made. Columns of binary data are left out, money is
/// a text.
///
/// Throws dao::EngineError: kFileNotFound when the file cannot be read, kUnrecognisedFormat, and kDamaged
/// with the place when anything in it cannot be read, for rows must never be missing unnoticed.
void LoadTables(const std::filesystem::path& jetFile, dao::Database& target);

/// Lets `engine` open Jet databases for reading. A log of version 1.0 shows the layout of 1.1, for nothing
/// can be added to it once it is open.
void InstallJetFormat(dao::DBEngine& engine = dao::DBEngine::Instance());

}  // namespace varnlog::legacy
