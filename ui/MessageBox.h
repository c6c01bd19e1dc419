#pragma once

#include <functional>

#include <QPointer>
#include <QWidget>

#include "core/TextLookup.h"
#include "core/UserDialog.h"

namespace varnlog::ui {

/// Messages of the logic as message boxes over the window in use. Text is shown as it is, never as markup.
/// Escape and the close box mean No, Cancel, or the only button there is.
class MessageBox final : public core::UserDialog {
 public:
  /// `parent` is where a box goes when no window of the program is active; not owned.
  explicit MessageBox(const core::TextLookup& texts, QWidget* parent = nullptr)
      : texts_(texts), parent_(parent) {}

  void SetParent(QWidget* parent) { parent_ = parent; }

  /// Takes the pointer's hourglass away, however often it was set, before the box opens.
  core::MessageAnswer Show(const core::Message& message) override;
  void Beep() override;

  /// From now on `script` answers instead of the user; an empty one ends that.
  using Script = std::function<core::MessageAnswer(const core::Message&)>;
  void AnswerWith(Script script) { script_ = std::move(script); }
  [[nodiscard]] int Beeps() const { return beeps_; }

 private:
  const core::TextLookup& texts_;
  QPointer<QWidget> parent_;
  Script script_;
  int beeps_ = 0;
};

}  // namespace varnlog::ui
