#include "db/UserDialog.h"

#include <utility>

namespace varnlog::db {

MessageAnswer MsgBox(UserDialog& user, const TextLookup& texts, std::string prompt, MessageIcon icon,
                     MessageButtons buttons, std::string title) {
  if (title.empty()) title = texts.GetText("GL_TITLE"_key);
  return user.Show({std::move(prompt), std::move(title), icon, buttons});
}

}  // namespace varnlog::db
