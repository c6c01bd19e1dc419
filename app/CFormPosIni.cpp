#include "app/CFormPosIni.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/Files.h"

namespace varnlog::app {

namespace {

constexpr std::string_view kSection = "Form Positions";
// Beyond any screen, and small enough that sums of two never overflow.
constexpr int kFarthest = 1'000'000;

/// The number between `marker` and the next ";".
std::optional<int> NumberBehind(std::string_view text, std::string_view marker) {
  const auto at = text.find(marker);
  if (at == std::string_view::npos) return std::nullopt;
  std::string_view digits = text.substr(at + marker.size());
  digits = digits.substr(0, digits.find(';'));
  long long number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec == std::errc::invalid_argument) return std::nullopt;
  if (result.ec == std::errc::result_out_of_range) number = digits.starts_with('-') ? -kFarthest : kFarthest;
  return static_cast<int>(std::clamp<long long>(number, -kFarthest, kFarthest));
}

std::optional<WindowPlace> PlaceOf(std::string_view text) {
  const auto left = NumberBehind(text, "L=");
  const auto top = NumberBehind(text, "T=");
  const auto width = NumberBehind(text, "W=");
  const auto height = NumberBehind(text, "H=");
  if (!left || !top || !width || !height) return std::nullopt;
  return WindowPlace{*left, *top, *width, *height};
}

}  // namespace

CFormPosIni::CFormPosIni(core::SettingsStore& settings)
    : settings_(settings), iniFile_(platform::ExecutableName() + ".ini") {}

bool CFormPosIni::RestoreForm(bool keepVisible) {
  const std::string text = settings_.ReadString(kSection, form_->Name(), iniFile_);
  const int state = NumberBehind(text, "S=").value_or(0);
  if (state == static_cast<int>(WindowState::kMinimised) ||
      state == static_cast<int>(WindowState::kMaximised)) {
    form_->SetState(static_cast<WindowState>(state));
    return true;
  }
  auto place = PlaceOf(text);
  if (!place) return false;
  if (keepVisible) {
    if (place->left >= form_->ScreenWidth()) place->left = form_->ScreenWidth() - place->width;
    if (place->top >= form_->ScreenHeight()) place->top = form_->ScreenHeight() - place->height;
  }
  form_->MoveTo(*place);
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
