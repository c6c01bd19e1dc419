#pragma once

namespace varnlog::dao {

/// Makes on another processor what takes long to make and all work with texts beyond ASCII needs: the text
/// order. For programs that know at their start that they will need it; nothing depends on it.
void WarmUp();

}  // namespace varnlog::dao
