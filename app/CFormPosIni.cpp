#include "app/CFormPosIni.h"

#include <algorithm>
#include <charconv>

namespace varnlog::app {

namespace {

constexpr std::string_view kSection = "Form Positions";
// Beyond any screen, and small enough that sums of two never overflow.
constexpr int kFarthest = 1'000'000;

/// The number between `marker` and the next ";"; 0 when there is none.
int NumberBehind(std::string_view text, std::string_view marker) {
  const auto at = text.find(marker);
  if (at == std::string_view::npos) return 0;
  std::string_view digits = text.substr(at + marker.size());
  digits = digits.substr(0, digits.find(';'));
  long long number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec == std::errc::result_out_of_range) number = digits.starts_with('-') ? -kFarthest : kFarthest;
  return static_cast<int>(std::clamp<long long>(number, -kFarthest, kFarthest));
}

}  // namespace

bool CFormPosIni::RestoreForm(bool keepVisible) {
  const std::string text = settings_.ReadString(kSection, form_->Name(), iniFile_);
  if (text.empty()) return false;
  const int state = NumberBehind(text, "S=");
  if (state == static_cast<int>(WindowState::kMinimised) ||
      state == static_cast<int>(WindowState::kMaximised)) {
    form_->SetState(static_cast<WindowState>(state));
    return true;
  }
  WindowPlace place{NumberBehind(text, "L="), NumberBehind(text, "T="), NumberBehind(text, "W="),
                    NumberBehind(text, "H=")};
  if (keepVisible) {
    if (place.left >= form_->ScreenWidth()) place.left = form_->ScreenWidth() - place.width;
    if (place.top >= form_->ScreenHeight()) place.top = form_->ScreenHeight() - place.height;
  }
  form_->MoveTo(place);
  return true;
}

void CFormPosIni::SaveForm() {
  const WindowPlace place = form_->Place();
  const std::string value = "L=" + std::to_string(place.left) + ";T=" + std::to_string(place.top) +
                            ";W=" + std::to_string(place.width) + ";H=" + std::to_string(place.height) +
                            ";S=" + std::to_string(static_cast<int>(form_->State()));
  settings_.WriteString(kSection, form_->Name(), value, iniFile_);
}

void CFormPosIni::CenterForm() {
  WindowPlace place = form_->Place();
  place.left = (form_->ScreenWidth() - place.width) / 2;
  place.top = (form_->ScreenHeight() - place.height) / 2;
  form_->MoveTo(place);
}

}  // namespace varnlog::app
