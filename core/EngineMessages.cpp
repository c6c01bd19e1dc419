#include "core/EngineMessages.h"

namespace varnlog::core {

std::string EngineErrorText(const dao::EngineError& error) {
  return std::to_string(static_cast<int>(error.number())) + ": " + error.what();
}

}  // namespace varnlog::core
