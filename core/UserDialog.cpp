#include "core/UserDialog.h"

#include <utility>

namespace varnlog::core {

MessageAnswer MsgBox(UserDialog& user, const TextLookup& texts, std::string prompt, MessageIcon icon,
                     MessageButtons buttons, std::string title) {
  if (title.empty()) title = texts.GetText("GL_TITLE"_key);
  return user.Show({std::move(prompt), std::move(title), icon, buttons});
}

}  // namespace varnlog::core
