#include "db/dao/ServerLink.h"
#include "db/dao/postgres/OpenServer.h"

namespace varnlog::dao {

namespace {

[[noreturn]] void Refuse(const std::string& link) {
  throw EngineError(ErrorNumber::kNotSupported,
                    "This program was built without servers; '" + link + "' cannot be opened with it.");
}

}  // namespace

std::shared_ptr<Storage> OpenServer(const std::string& path, Storage::Mode /*mode*/,
                                    const std::shared_ptr<EngineState>& /*state*/) {
  Refuse(path);
}

void DeclareOnServer(const std::string& link, std::string_view /*declarations*/, bool /*byYear*/) {
  Refuse(link);
}

}  // namespace varnlog::dao
