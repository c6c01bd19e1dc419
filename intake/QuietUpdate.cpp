#include "intake/QuietUpdate.h"

#include <utility>

namespace varnlog::intake {

namespace {

// Nobody has asked for this run, so nobody is kept waiting for it.
constexpr std::chrono::milliseconds kPatience{300};

class QuietView final : public UpdateView {
 public:
  explicit QuietView(const std::function<void()>& wait) : wait_(wait) {}

  void SetRecordCount(std::int64_t /*records*/) override {}
  void Advance(std::int64_t /*recordsDone*/) override {}
  void Wait() override { wait_(); }
  void Beep() override {}
  void ShowNotices(const std::vector<std::string>& notices) override {
    unsaid_.insert(unsaid_.end(), notices.begin(), notices.end());
  }
  /// The answer that does nothing. How many exposures came can be seen.
  core::MessageAnswer Show(const core::Message& message) override {
    if (!message.choices.empty()) return message.choices.back().answer;
    if (message.buttons == core::MessageButtons::kYesNo) return core::MessageAnswer::kNo;
    if (message.buttons == core::MessageButtons::kRetryCancel) return core::MessageAnswer::kCancel;
    if (message.icon != core::MessageIcon::kInformation) unsaid_.push_back(message.text);
    return core::MessageAnswer::kOk;
  }

  [[nodiscard]] std::vector<std::string> TakeUnsaid() { return std::exchange(unsaid_, {}); }

 private:
  const std::function<void()>& wait_;
  std::vector<std::string> unsaid_;
};

}  // namespace

QuietResult RunQuietUpdate(const UpdateContext& context, const std::function<void()>& wait) {
  // A run that is given up declines on behalf of the user, who has not been asked.
  const bool declined = std::exchange(context.globals.UpdateDeclinedGl, false);
  QuietView view(wait);
  QuietResult result;
  result.update = RunUpdate(context, view, {.patience = kPatience});
  result.unsaid = view.TakeUnsaid();
  context.globals.UpdateDeclinedGl = declined;
  return result;
}

}  // namespace varnlog::intake
