#include "core/Messages.h"

#include <utility>

namespace varnlog::core {

MessageAnswer Messages::Show(const Notice& notice) const {
  return user_.Show({.text = FilledText(texts_, notice.key, notice.values),
                     .title = texts_.GetText(notice.title),
                     .icon = notice.icon,
                     .buttons = notice.buttons,
                     .choices = notice.choices,
                     .lastIsDefault = notice.lastIsDefault,
                     .key = std::string(notice.key.name())});
}

MessageAnswer Messages::ShowText(std::string text, MessageIcon icon, MessageButtons buttons,
                                 TextKey title) const {
  return user_.Show(
      {.text = std::move(text), .title = texts_.GetText(title), .icon = icon, .buttons = buttons});
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
