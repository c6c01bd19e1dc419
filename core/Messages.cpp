#include "core/Messages.h"

#include <utility>

namespace varnlog::core {

MessageAnswer Messages::Show(const Notice& notice) const {
  return ShowText(FilledText(texts_, notice.key, notice.values), notice.icon, notice.buttons, notice.title);
}

MessageAnswer Messages::ShowText(std::string text, MessageIcon icon, MessageButtons buttons,
                                 TextKey title) const {
  return user_.Show({std::move(text), texts_.GetText(title), icon, buttons});
}

void Messages::Critical(TextKey key, const Placeholders& values) const {
  Show({.key = key, .values = values});
}

void Messages::Inform(TextKey key, const Placeholders& values) const {
  Show({.key = key, .values = values, .icon = MessageIcon::kInformation});
}

bool Messages::Confirm(TextKey key, const Placeholders& values, TextKey title) const {
  const MessageAnswer answer = Show({.key = key,
                                     .values = values,
                                     .icon = MessageIcon::kQuestion,
                                     .buttons = MessageButtons::kYesNo,
                                     .title = title});
  return answer == MessageAnswer::kYes;
}

}  // namespace varnlog::core
