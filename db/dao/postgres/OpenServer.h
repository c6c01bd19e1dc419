#pragma once

#include <memory>
#include <string>

#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

/// The log that a link file names. Throws as Workspace::OpenDatabase() says; kNotSupported in a program that
/// was built without the server's client library.
[[nodiscard]] std::shared_ptr<Storage> OpenServer(const std::string& path, Storage::Mode mode,
                                                  const std::shared_ptr<EngineState>& state);

}  // namespace varnlog::dao
