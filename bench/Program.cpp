#include "bench/Program.h"

#include <stdexcept>

#include <QAccessible>
#include <QApplication>

namespace varnlog::bench {

namespace {

/// Whether a widget was painted.
class PaintWatch final : public QObject {
 public:
  explicit PaintWatch(QWidget& widget) { widget.installEventFilter(this); }
  [[nodiscard]] bool painted() const { return painted_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    painted_ = painted_ || event->type() == QEvent::Paint;
    return QObject::eventFilter(watched, event);
  }

 private:
  bool painted_ = false;
};

constexpr int kVisits = 300;

}  // namespace

Program::Program(const std::filesystem::path& programFolder) {
  globals_.ProgramFolderGl = programFolder.string();
  globals_.IniFileGl = (programFolder / "varnlog.ini").string();
  if (!texts_.InitLanguage()) throw std::runtime_error(texts_.InitError());
  texts_.SetLanguage("D");
  user_.AnswerWith([](const core::Message& message) {
    return message.buttons == core::MessageButtons::kOk ? core::MessageAnswer::kOk
                                                        : core::MessageAnswer::kYes;
  });
  window_ = std::make_unique<app::frmMDIMain>(
      app::WindowContext{globals_, {ini_, texts_, user_, clock_}, scheme_, shortDate_});
  user_.SetParent(window_.get());
  if (!window_->Load() || window_->Results() == nullptr) {
    throw std::runtime_error("the program did not start");
  }
}

Program::~Program() {
  window_->close();
  QCoreApplication::processEvents();
  window_.reset();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Program::UntilPainted() {
  const PaintWatch watch(*Grid().viewport());
  while (!watch.painted() || (Grid().ApproximateCount() > 0 && Grid().Model().BlocksRead() == 0)) {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
  }
}

void Program::UntilPopulated() {
  UntilPainted();
  while (!window_->Results()->IsPopulated()) QCoreApplication::processEvents(QEventLoop::AllEvents);
  QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void JumpTo(ui::TDBGrid& grid, int row) {
  grid.SetCurrentCell(row, 1);
  grid.viewport()->repaint();
}

int ReadChildren(ui::TDBGrid& grid) {
  QAccessibleInterface* table = QAccessible::queryAccessibleInterface(&grid);
  if (table == nullptr) return 0;
  const int count = table->childCount();
  int answered = 0;
  for (int i = 0; i < count; ++i) {
    QAccessibleInterface* child = table->child(i);
    if (child == nullptr) continue;
    const QString told = child->text(QAccessible::Name) + child->text(QAccessible::Description);
    if (child->rect().isValid() && !told.isNull()) ++answered;
  }
  return answered;
}

int Walk(const std::string& how, const std::string& programFolder) {
  Program program(programFolder);
  program.UntilPopulated();
  ui::TDBGrid& grid = program.Grid();
  const std::int64_t rows = grid.ApproximateCount();
  for (std::int64_t i = 0; i < kVisits && rows > 0; ++i) JumpTo(grid, static_cast<int>(i * rows / kVisits));
  return how != "children" || ReadChildren(grid) > 0 ? 0 : 1;
}

}  // namespace varnlog::bench
