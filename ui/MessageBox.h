#pragma once

#include <functional>

#include <QPointer>
#include <QWidget>

#include "db/TextLookup.h"
#include "db/UserDialog.h"

namespace varnlog::ui {

/// Messages of the logic as message boxes over the window in use. Text is shown as it is, never as markup.
/// Escape and the close box mean No, Cancel, or the only button there is.
class MessageBox final : public db::UserDialog {
 public:
  /// `parent` is where a box goes when no window of the program is active; not owned.
  explicit MessageBox(const db::TextLookup& texts, QWidget* parent = nullptr)
      : texts_(texts), parent_(parent) {}

  void SetParent(QWidget* parent) { parent_ = parent; }

  /// Takes the pointer's hourglass away, however often it was set, before the box opens.
  db::MessageAnswer Show(const db::Message& message) override;
  void Beep() override;

  /// From now on `script` answers instead of the user; an empty one ends that.
  using Script = std::function<db::MessageAnswer(const db::Message&)>;
  void AnswerWith(Script script) { script_ = std::move(script); }
  [[nodiscard]] int Beeps() const { return beeps_; }

 private:
  const db::TextLookup& texts_;
  QPointer<QWidget> parent_;
  Script script_;
  int beeps_ = 0;
};

}  // namespace varnlog::ui
