#pragma once

namespace varnlog::platform {

/// What a desktop has to know of a program with windows before it makes the first one: which of them belong
/// together in the taskbar. Nothing where the desktop finds that out by itself.
void IntroduceToDesktop();

/// Whether the user wants dark windows and the toolkit does not see to that by itself.
[[nodiscard]] bool WantsDarkWindows();

/// Lets another running copy of this program put itself in front, which only the program that the user has
/// just started may do.
void LetOtherComeToFront();

}  // namespace varnlog::platform
