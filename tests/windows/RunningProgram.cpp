#include "tests/windows/RunningProgram.h"

#include <stdexcept>

#include <QHeaderView>
#include <QPushButton>
#include <QTimer>

#include "legacy/LoadTables.h"
#include "ui/QtText.h"

namespace varnlog::app::test {

namespace {

constexpr int kMillisecondsBetweenLooks = 10;
constexpr int kPatience = 1000;  // looks until a dialog counts as forgotten

}  // namespace

RunningProgram::RunningProgram(const cli::Installation& installation, core::MessageAnswer answer,
                               const StartedWith& started)
    : answer_(answer) {
  globals_.ProgramFolderGl = installation.program().string();
  globals_.IniFileGl = (installation.program() / "varnlog.ini").string();
  legacy::InstallJetFormat();
  if (!texts_.InitLanguage()) throw std::runtime_error(texts_.InitError());
  texts_.SetLanguage("D");
  user_.AnswerWith([this](const core::Message& message) {
    messages_.append(ui::ToQString(message.text));
    if (message.choices.empty() && message.buttons == core::MessageButtons::kOk) {
      return core::MessageAnswer::kOk;
    }
    if (first_.empty()) return answer_;
    const core::MessageAnswer next = first_.front();
    first_.pop_front();
    return next;
  });
  window_ = std::make_unique<frmMDIMain>(WindowContext{
      globals_,
      {started.isInspection ? static_cast<core::SettingsStore&>(forgetting_) : ini_, texts_, user_, clock_},
      scheme_,
      shortDate_,
      started});
  user_.SetParent(window_.get());
  if (!window_->Load()) throw std::runtime_error("the program did not start");
  window_->activateWindow();
  Settle();
}

RunningProgram::~RunningProgram() {
  answer_ = core::MessageAnswer::kYes;
  steps_.clear();
  if (window_->isVisible()) window_->close();
  Settle();
  window_.reset();
}

QString RunningProgram::Text(core::TextKey key) const {
  return ui::Caption(texts_, key);
}

void RunningProgram::Settle() {
  for (int i = 0; i < 5; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void RunningProgram::Triggers(CommandId command) {
  window_->Action(command)->trigger();
  Settle();
}

bool RunningProgram::Quits() {
  const bool closed = window_->close();
  Settle();
  return closed;
}

void RunningProgram::InDialog(const char* name, std::function<void(QDialog&)> user) {
  const bool polling = !steps_.empty();
  steps_.emplace_back(QLatin1String(name), std::move(user));
  if (!polling) Poll(kPatience);
}

void RunningProgram::Poll(int patience) {
  QTimer::singleShot(kMillisecondsBetweenLooks, window_.get(), [this, patience] {
    if (steps_.empty()) return;
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || dialog->objectName() != steps_.front().first) {
      if (patience > 0) {
        Poll(patience - 1);
        return;
      }
      ADD_FAILURE() << "no dialog " << steps_.front().first.toStdString();
      if (dialog != nullptr) dialog->done(QDialog::Rejected);
      return;
    }
    const auto user = std::move(steps_.front().second);
    steps_.erase(steps_.begin());
    // What is done in this dialog may open the next one.
    if (!steps_.empty()) Poll(kPatience);
    user(*dialog);
  });
}

void RunningProgram::ClicksCell(int row, int column) {
  ui::TDBGrid& grid = Grid();
  grid.SetCurrentCell(row, column);
  QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier,
                    grid.visualRect(grid.model()->index(row, column)).center());
  Settle();
}

void RunningProgram::ClicksHeading(int column) {
  QHeaderView& header = *Grid().horizontalHeader();
  Grid().scrollTo(Grid().model()->index(0, column));
  QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::NoModifier,
                    {header.sectionViewportPosition(column) + 20, header.height() / 2});
  Settle();
}

void RunningProgram::Enters(int row, int column, const QString& text) {
  window_->activateWindow();
  Grid().SetCurrentCell(row, column);
  Grid().setFocus();
  Settle();
  QTest::keyClick(&Grid(), Qt::Key_F2);
  Settle();
  if (!Grid().IsEditing()) return;
  QWidget* editor = QApplication::focusWidget();
  if (editor == nullptr) throw std::runtime_error("the window is not active");
  QTest::keySequence(editor, QKeySequence::SelectAll);
  QTest::keyClick(editor, Qt::Key_Delete);
  QTest::keyClicks(editor, text);
  QTest::keyClick(editor, Qt::Key_Return);
  Settle();
}

QStringList RunningProgram::ColumnTexts(int column) {
  QStringList texts;
  for (int row = 0; row < Grid().ApproximateCount(); ++row) texts.append(Grid().CellText(row, column));
  return texts;
}

}  // namespace varnlog::app::test
