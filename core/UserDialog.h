#pragma once

#include <string>
#include <vector>

#include "core/TextLookup.h"

namespace varnlog::core {

enum class MessageIcon { kNone, kInformation, kQuestion, kWarning, kCritical };
enum class MessageButtons { kOk, kYesNo, kRetryCancel };
enum class MessageAnswer { kOk, kYes, kNo, kRetry, kCancel, kList, kLook, kOpen, kGoOn };

/// A button of a message that has others than the usual ones.
struct MessageChoice {
  MessageAnswer answer;
  TextKey text;
};

struct Message {
  std::string text;
  std::string title;
  MessageIcon icon = MessageIcon::kNone;
  MessageButtons buttons = MessageButtons::kOk;
  /// Instead of `buttons` when there are any: the first is the default, the last is what Escape means.
  std::vector<MessageChoice> choices = {};
  /// Return means the same as Escape, because the first answer is the one that does harm by mistake.
  bool lastIsDefault = false;
  std::string key = {};  // of the text, for the help about it; "" when it was composed
};

/// The one way in which logic speaks to the user. A window shows a box, varnlogctl writes to standard error,
/// a test answers by script.
class UserDialog {
 public:
  virtual ~UserDialog() = default;
  virtual MessageAnswer Show(const Message& message) = 0;
  virtual void Beep() = 0;
};

}  // namespace varnlog::core
