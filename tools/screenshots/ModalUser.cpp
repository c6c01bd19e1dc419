#include "tools/screenshots/ModalUser.h"

#include <stdexcept>
#include <utility>

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

namespace varnlog::tools {

namespace {

constexpr int kMillisecondsBetweenLooks = 5;
constexpr int kPatience = 1'000;  // looks at a dialog that is not the one expected

}  // namespace

ModalUser::ModalUser() {
  LookAgain();
}

void ModalUser::Expect(const char* name, Act act, Ready ready) {
  steps_.push_back({QLatin1String(name), std::move(act), std::move(ready)});
  looks_ = 0;
}

void ModalUser::Check() const {
  if (!complaint_.empty()) throw std::runtime_error(complaint_);
  if (!steps_.empty()) throw std::runtime_error("never opened: " + steps_.front().name.toStdString());
}

void ModalUser::LookAgain() {
  // One shot after another: a timer does not fire while what it started still runs, and a dialog's own loop
  // runs in there.
  QTimer::singleShot(kMillisecondsBetweenLooks, this, &ModalUser::Look);
}

void ModalUser::Look() {
  LookAgain();
  auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  if (dialog == nullptr || !dialog->isVisible()) {
    looks_ = 0;
    return;
  }
  // What is done in a dialog lets events through; the next step is not meant for it.
  if (dialog == actedOn_) return;
  if (steps_.empty() || dialog->objectName() != steps_.front().name ||
      (steps_.front().ready && !steps_.front().ready(*dialog))) {
    if (++looks_ > kPatience) Dismiss(*dialog);
    return;
  }
  const Act act = std::move(steps_.front().act);
  steps_.pop_front();
  looks_ = 0;
  const QPointer<QDialog> outer = std::exchange(actedOn_, dialog);
  act(*dialog);
  actedOn_ = outer;
}

void ModalUser::Dismiss(QDialog& dialog) {
  if (complaint_.empty()) {
    const auto* box = qobject_cast<const QMessageBox*>(&dialog);
    complaint_ =
        (dialog.objectName() + (box == nullptr ? QString() : " \"" + box->text() + '"') +
         " was not expected, " + (steps_.empty() ? QStringLiteral("nothing") : steps_.front().name) + " was")
            .toStdString();
  }
  looks_ = 0;
  dialog.reject();
}

}  // namespace varnlog::tools
