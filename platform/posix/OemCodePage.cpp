#include "platform/CodePage.h"

namespace varnlog::platform {

// There is no OEM page to ask this system for: the imaging suite's workstations use these two.
CodePage CodePage::Oem(std::string_view language) {
  return CodePage(language == "CYR" ? 866 : 850);
}

}  // namespace varnlog::platform
