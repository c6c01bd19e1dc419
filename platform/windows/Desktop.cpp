#include "platform/Desktop.h"

#include "platform/windows/System.h"

namespace varnlog::platform {

void IntroduceToDesktop() {
  // The shortcut that the setup makes leads to the same program, so both become one button.
  SetCurrentProcessExplicitAppUserModelID(L"Varnlog.XRayLog");
}

bool WantsDarkWindows() {
  DWORD isLight = 1;
  DWORD size = sizeof isLight;
  RegGetValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
               L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
  return isLight == 0;
}

void LetOtherComeToFront() {
  AllowSetForegroundWindow(ASFW_ANY);
}

}  // namespace varnlog::platform
