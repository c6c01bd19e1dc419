#include <stdexcept>

#include "platform/CodePage.h"
#include "platform/windows/System.h"

namespace varnlog::platform {

// The imaging suite converts with the system's page; this program's own, which GetOEMCP() names, is UTF-8 by
// its manifest. Where the system's takes several bytes a character (UTF-8, the pages of East Asia) no suite
// writes these files; the pages of other systems are as good as any.
CodePage CodePage::Oem(std::string_view language) {
  DWORD page = 0;
  GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTCODEPAGE | LOCALE_RETURN_NUMBER,
                 reinterpret_cast<wchar_t*>(&page), sizeof page / sizeof(wchar_t));
  try {
    return CodePage(static_cast<int>(page));
  } catch (const std::invalid_argument&) {
    return CodePage(language == "CYR" ? 866 : 850);
  }
}

}  // namespace varnlog::platform
