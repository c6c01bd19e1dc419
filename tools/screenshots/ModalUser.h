#pragma once

#include <deque>
#include <functional>
#include <string>

#include <QDialog>
#include <QObject>
#include <QPointer>

namespace varnlog::tools {

/// Plays the user of modal windows: what is to be done in each is said before the program opens it. A window
/// that nobody expects is closed, so that nothing waits for ever.
class ModalUser final : public QObject {
 public:
  using Act = std::function<void(QDialog&)>;
  using Ready = std::function<bool(const QDialog&)>;

  ModalUser();

  /// `act` runs once the dialog of that object name is open and `ready` agrees. In the order given.
  void Expect(const char* name, Act act, Ready ready = {});
  /// Throws std::runtime_error when a dialog expected has not come, or another one has.
  void Check() const;

 private:
  struct Step {
    QString name;
    Act act;
    Ready ready;
  };
  void Look();
  void LookAgain();
  void Dismiss(QDialog& dialog);

  std::deque<Step> steps_;
  QPointer<QDialog> actedOn_;
  int looks_ = 0;
  std::string complaint_;
};

}  // namespace varnlog::tools
