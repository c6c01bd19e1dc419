#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <gtest/gtest.h>

#include "app/frmMDIMain.h"
#include "start/InspectionSettings.h"
#include "start/Language.h"
#include "start/modINIFile.h"
#include "tests/cli/Installation.h"
#include "ui/MessageBox.h"

namespace varnlog::app::test {

/// One run of the program in this process, on a scratch installation. Message boxes are answered at once:
/// with `answer` where there is a choice.
class RunningProgram {
 public:
  explicit RunningProgram(const cli::Installation& installation,
                          core::MessageAnswer answer = core::MessageAnswer::kYes,
                          const StartedWith& started = {});
  ~RunningProgram();
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  [[nodiscard]] frmMDIMain& Window() { return *window_; }
  [[nodiscard]] ui::TDBGrid& Grid() { return window_->Results()->Grid(); }
  [[nodiscard]] core::Globals& Globals() { return globals_; }
  [[nodiscard]] QString Text(core::TextKey key) const;

  void Triggers(CommandId command);
  /// False when the question was answered with No.
  bool Quits();

  /// What `user` does in the dialog of that object name once it is open. Dialogs are expected in this order.
  void InDialog(const char* name, std::function<void(QDialog&)> user);
  /// True when every dialog expected has come.
  [[nodiscard]] bool DialogsDone() const { return steps_.empty(); }

  void AnswersWith(core::MessageAnswer answer) { answer_ = answer; }
  /// What the next messages with a choice are answered with; then it is AnswersWith() again.
  void AnswersFirst(std::initializer_list<core::MessageAnswer> answers) { first_ = answers; }
  /// The texts shown since the last call.
  [[nodiscard]] QStringList TakeMessages() { return std::exchange(messages_, {}); }
  [[nodiscard]] int Beeps() const { return user_.Beeps(); }

  void ClicksCell(int row, int column);
  void ClicksHeading(int column);
  /// Goes to the cell, types over what it holds and confirms.
  void Enters(int row, int column, const QString& text);
  /// The texts of a column from top to bottom.
  [[nodiscard]] QStringList ColumnTexts(int column);

  static void Settle();

 private:
  void Poll(int patience);

  core::Globals globals_;
  start::Language texts_{globals_};
  ui::MessageBox user_{texts_};
  start::modINIFile ini_;
  start::InspectionSettings forgetting_{ini_};
  platform::SystemClock clock_;
  platform::ShortDate shortDate_;
  start::HostToothScheme scheme_{globals_, ini_};
  std::unique_ptr<frmMDIMain> window_;
  core::MessageAnswer answer_;
  std::deque<core::MessageAnswer> first_;
  QStringList messages_;
  std::vector<std::pair<QString, std::function<void(QDialog&)>>> steps_;
};

template <typename Widget>
Widget& Child(QWidget& parent, const char* name) {
  auto* child = parent.findChild<Widget*>(QLatin1String(name));
  if (child == nullptr) throw std::runtime_error(std::string("no ") + name);
  return *child;
}

}  // namespace varnlog::app::test
