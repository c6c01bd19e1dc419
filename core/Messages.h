#pragma once

#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "core/UserDialog.h"

namespace varnlog::core {

/// The title of messages that have none of their own.
inline constexpr TextKey kProgramTitle = "GL_TITLE"_key;

/// A message by its key, with what stands for the text's placeholders.
struct Notice {
  TextKey key;
  Placeholders values = {};
  MessageIcon icon = MessageIcon::kCritical;
  MessageButtons buttons = MessageButtons::kOk;
  TextKey title = kProgramTitle;
  std::vector<MessageChoice> choices = {};  // see Message
  bool lastIsDefault = false;               // see Message
};

/// The program's messages in the current language, for one listener. Cheap to make and to copy; lives no
/// longer than the two that it is made of.
class Messages {
 public:
  Messages(UserDialog& user, const TextLookup& texts) : user_(user), texts_(texts) {}

  MessageAnswer Show(const Notice& notice) const;
  /// A text that has been composed already, or that is in other words than the program's.
  MessageAnswer ShowText(std::string text, MessageIcon icon = MessageIcon::kCritical,
                         MessageButtons buttons = MessageButtons::kOk, TextKey title = kProgramTitle) const;

  void Critical(TextKey key, const Placeholders& values = {}) const;
  void Inform(TextKey key, const Placeholders& values = {}) const;
  /// A question with the buttons Yes and No; true when it was answered with Yes.
  [[nodiscard]] bool Confirm(TextKey key, const Placeholders& values = {},
                             TextKey title = kProgramTitle) const;

 private:
  UserDialog& user_;
  const TextLookup& texts_;
};

}  // namespace varnlog::core
