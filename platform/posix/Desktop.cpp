#include "platform/Desktop.h"

namespace varnlog::platform {

// The desktops here need nothing of it.
void IntroduceToDesktop() {}

bool WantsDarkWindows() {
  return false;
}

void LetOtherComeToFront() {}

}  // namespace varnlog::platform
