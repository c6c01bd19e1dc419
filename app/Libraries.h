#pragma once

#include <vector>

#include "ui/frmAbout.h"

namespace varnlog::app {

/// What the program is built from, for the about box.
[[nodiscard]] std::vector<ui::UsedLibrary> UsedLibraries();

}  // namespace varnlog::app
