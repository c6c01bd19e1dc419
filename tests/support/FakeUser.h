#pragma once

#include <string>
#include <vector>

#include "core/UserDialog.h"

namespace varnlog::test {

/// Remembers what was said and says one thing to everything.
class FakeUser : public core::UserDialog {
 public:
  core::MessageAnswer Show(const core::Message& message) override {
    messages.push_back(message);
    return answer;
  }
  void Beep() override { ++beeps; }

  core::MessageAnswer answer = core::MessageAnswer::kOk;
  std::vector<core::Message> messages;
  int beeps = 0;
};

}  // namespace varnlog::test
