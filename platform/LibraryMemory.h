#pragma once

namespace varnlog::platform {

/// What the text library asks for in vain goes to the program's handler for that (std::set_new_handler), as
/// what the program asks for itself does: in some places the library does not survive it. To be called once,
/// before anything works with texts.
void GuardLibraryMemory();

}  // namespace varnlog::platform
