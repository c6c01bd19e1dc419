#pragma once

#include <functional>
#include <string>

#include "db/dao/postgres/LinkFile.h"

struct pg_conn;

namespace varnlog::dao {

/// Opens a connection as ServerSession says; the caller owns it.
[[nodiscard]] pg_conn* ConnectToServer(const LinkFile& link, const std::string& path,
                                       const std::function<bool()>& waiting, bool& isStandby);

}  // namespace varnlog::dao
