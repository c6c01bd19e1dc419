#include "intake/CToken.h"

namespace varnlog::intake {

void CToken::Reset() {
  for (std::string& value : values_) value.clear();
}

}  // namespace varnlog::intake
