#pragma once

#include <filesystem>
#include <string>

#include "db/dao/DBEngine.h"
#include "server/LogTransfer.h"

namespace varnlog::server {

/// Makes schema, rules and roles on the server that the link file names, and puts back what is missing of
/// them. `byYear` keeps the exposures in one table a year; kNotSupported where the log is there and does not.
/// Throws dao::EngineError.
void InitLog(const std::string& link, bool byYear = false);

/// Takes a file's log over, history and seals included, into the empty one on the server, all of it or
/// nothing; the file is only read, and nobody can write to it meanwhile. Throws dao::EngineError:
/// kNotSupported where the log on the server is not empty or the file is none that the program has opened
/// before.
[[nodiscard]] Transfer AdoptLog(dao::DBEngine& engine, const std::string& link, const std::string& logFile,
                                const TransferProgress& progress);

/// The way back, into a new file made of the program's empty log. Throws dao::EngineError, kFileExists where
/// there is a file of that name already; a failure leaves none.
[[nodiscard]] Transfer ExportLog(dao::DBEngine& engine, const std::string& link,
                                 const std::filesystem::path& emptyLog, const std::string& logFile,
                                 const TransferProgress& progress);

}  // namespace varnlog::server
