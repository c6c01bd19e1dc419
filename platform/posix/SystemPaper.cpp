#include "platform/Paper.h"
#include "platform/posix/SystemLocale.h"

namespace varnlog::platform {

Paper SystemPaper() {
  return PaperOf(SystemLocale("LC_PAPER"));
}

}  // namespace varnlog::platform
