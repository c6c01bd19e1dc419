#include "tools/screenshots/WindowTour.h"

#include <map>
#include <stdexcept>

#include <QApplication>
#include <QDeadlineTimer>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeView>

#include "app/frmConvert.h"
#include "logview/Columns.h"
#include "platform/Files.h"
#include "report/frmPrinter.h"
#include "report/frmPrinterSetup.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"
#include "ui/QtTexts.h"

namespace varnlog::tools {

using app::CommandId;
using core::literals::operator""_key;

namespace {

constexpr QSize kMainWindow(1366, 740);
constexpr int kVoltageColumn = 7;
constexpr double kPartOfUpdateShown = 0.4;

const std::map<std::string, const char*> kLocales = {{"D", "de_DE"},  {"GB", "en_GB"}, {"E", "es_ES"},
                                                     {"I", "it_IT"},  {"F", "fr_FR"},  {"NL", "nl_NL"},
                                                     {"CYR", "ru_RU"}};

platform::DateTime Today() {
  return *platform::DateTime::FromIso("2026-11-21 08:15:00");
}

void Settle() {
  for (int i = 0; i < 5; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Press(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QKeyEvent press(QEvent::KeyPress, key, modifiers);
  QCoreApplication::sendEvent(widget, &press);
  Settle();
}

template <typename Widget>
Widget& Child(QWidget& parent, const char* name) {
  auto* child = parent.findChild<Widget*>(QLatin1String(name));
  if (child == nullptr) throw std::runtime_error(std::string("no ") + name);
  return *child;
}

/// What a practice has; the build machine has none.
class TwoPrinters final : public report::Printers {
 public:
  [[nodiscard]] std::vector<QString> Names() const override {
    return {QStringLiteral("Kyocera ECOSYS P2040dn"), QStringLiteral("HP LaserJet Pro MFP M428 (PCL 6)")};
  }
  [[nodiscard]] QString DefaultName() const override { return Names().back(); }
  [[nodiscard]] std::vector<QPageSize> Papers(const QString& /*name*/) const override { return {}; }
  [[nodiscard]] std::unique_ptr<QPrinter> Open(const QString& /*name*/) const override { return nullptr; }
};

}  // namespace

WindowTour::WindowTour(const DemoPractice& practice, const std::string& language, Visitor visit)
    : oldLog_(platform::FromPath(practice.oldLog())),
      visit_(std::move(visit)),
      ini_(language),
      clock_(Today()) {
  const QLocale locale(QLatin1String(kLocales.at(language)));
  QLocale::setDefault(locale);
  shortDate_ = platform::ShortDate::FromPattern(ui::FromQString(locale.dateFormat(QLocale::ShortFormat)));
  globals_.ProgramFolderGl = platform::FromPath(practice.program());
  globals_.IniFileGl = platform::FromPath(practice.program() / "varnlog.ini");
  if (!texts_.InitLanguage()) throw std::runtime_error(texts_.InitError());
  texts_.SetLanguage(language);
  ui::TranslateQt(qtTexts_, language);
  QCoreApplication::installTranslator(&keyNames_);
}

WindowTour::~WindowTour() = default;

void WindowTour::Run() {
  Start();
  ShowLog();
  ShowEditing();
  ShowMenus();
  ShowSelections();
  ShowPatientSearch();
  ShowProgramWindows();
  ShowHelp();
  ShowPrinting();
  ShowOtherStates();
  ShowConversion();
  Quit();
}

void WindowTour::Visit(const QString& name, QWidget& window) {
  Settle();
  visit_(QStringLiteral("%1-%2").arg(++visits_, 2, 10, QLatin1Char('0')).arg(name), window);
}

void WindowTour::ExpectAndPress(const char* dialog, const QString& name, const char* button) {
  user_.Expect(dialog, [this, name, button](QDialog& window) {
    Visit(name, window);
    Child<QPushButton>(window, button).click();
  });
}

void WindowTour::ExpectMessage(const QString& name, bool agree) {
  user_.Expect("MessageBox", [this, name, agree](QDialog& window) {
    Visit(name, window);
    auto& box = dynamic_cast<QMessageBox&>(window);
    (agree ? box.defaultButton() : box.escapeButton())->click();
  });
}

void WindowTour::Trigger(CommandId command) {
  window_->Action(command)->trigger();
  Settle();
  user_.Check();
}

QString WindowTour::Text(core::TextKey key) const {
  return ui::Caption(texts_, key);
}

void WindowTour::Start() {
  window_ = std::make_unique<app::frmMDIMain>(
      app::WindowContext{globals_, {ini_, texts_, messages_, clock_}, scheme_, shortDate_});
  messages_.SetParent(window_.get());
  ExpectMessage("message-update");
  const auto halfWay = [](const QDialog& window) {
    const auto* bar = window.findChild<QProgressBar*>();
    return bar->maximum() > 0 && bar->value() > bar->maximum() * kPartOfUpdateShown;
  };
  // The dates are looked at before the run begins: one is said, the other is listed at the end.
  user_.Expect("MessageBox", [this](QDialog& window) {
    Visit("message-birth-date", window);
    auto& box = dynamic_cast<QMessageBox&>(window);
    for (QAbstractButton* button : box.buttons()) {
      if (box.buttonRole(button) == QMessageBox::ActionRole) return button->click();
    }
  });
  user_.Expect(
      "frmRunUpdate",
      [this](QDialog& window) {
        Visit("run-update", window);
        Child<QPushButton>(window, "cmdCancel").click();
      },
      halfWay);
  ExpectAndPress("frmCancelUpdate", "cancel-update", "cmdUpdate");
  ExpectAndPress("frmUpdateNotices", "update-notices", "cmdClose");
  ExpectMessage("message-updated");
  if (!window_->Load()) throw std::runtime_error("the program did not start");
  window_->showNormal();
  window_->resize(kMainWindow);
  window_->activateWindow();
  Settle();
  user_.Check();
}

void WindowTour::ShowLog() {
  Enter(1, logview::kCommentColumn, QStringLiteral("36 MOD"));
  Enter(4, logview::kCommentColumn, QStringLiteral("+"));
  ExpectMessage("message-unusual");
  Enter(FirstRow(kVoltageColumn, ui::CellState::kEdit), kVoltageColumn, QStringLiteral("63"));
  user_.Check();
  Grid().SetCurrentCell(0, logview::kNumberColumn);
  // The line below the list comes a moment later.
  const auto& sums = Child<QLabel>(*window_, "lblSums");
  for (QDeadlineTimer patience(5000); sums.text().isEmpty() && !patience.hasExpired();) Settle();
  Visit("log", *window_);
  Trigger(CommandId::mnuViewHistory);
  Grid().SetCurrentCell(1, logview::kCommentColumn);
  Visit("log-history", *window_);
  Trigger(CommandId::mnuViewHistory);
  Trigger(CommandId::mnuEditFind);
  Child<QLineEdit>(*window_, "txtFind").setText(QStringLiteral("a"));
  Visit("log-find", *window_);
  Press(&Child<QLineEdit>(*window_, "txtFind"), Qt::Key_Escape);
  user_.Expect("frmStatistics", [this](QDialog& window) {
    auto& pages = Child<QTabWidget>(window, "tabPages");
    for (int page = 0; page < pages.count(); ++page) {
      pages.setCurrentIndex(page);
      Visit(QStringLiteral("statistics-%1").arg(page + 1), window);
    }
    Child<QPushButton>(window, "cmdClose").click();
  });
  Trigger(CommandId::mnuViewStatistics);
  window_->activateWindow();
  Settle();
  Grid().ClickHeading(logview::kPatientColumn);
  Visit("log-sorted", *window_);
  Trigger(CommandId::mnuSortAll);
}

void WindowTour::ShowEditing() {
  Grid().SetCurrentCell(FirstRow(kVoltageColumn, ui::CellState::kEdit), kVoltageColumn);
  Grid().setFocus();
  Press(&Grid(), Qt::Key_F2);
  Visit("edit-value", *window_);
  Press(QApplication::focusWidget(), Qt::Key_Escape);
  for (const int column : {int{logview::kPregnancyColumn}, int{logview::kRetakeColumn}}) {
    Grid().SetCurrentCell(FirstRow(column, ui::CellState::kEdit), column);
    Press(&Grid(), Qt::Key_F4);
    Visit(QStringLiteral("edit-list-%1").arg(column), *window_);
    if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
    Settle();
  }
  Grid().SetCurrentCell(FirstRow(kVoltageColumn, ui::CellState::kLocked), kVoltageColumn);
  ExpectMessage("message-locked");
  Press(&Grid(), Qt::Key_F2);
  user_.Check();
}

void WindowTour::ShowMenus() {
  for (QAction* action : window_->menuBar()->actions()) {
    QMenu* menu = action->menu();
    if (menu == nullptr || menu->objectName().isEmpty()) continue;
    const QRect entry = window_->menuBar()->actionGeometry(action);
    menu->popup(window_->menuBar()->mapToGlobal(entry.bottomLeft()));
    Visit("menu-" + menu->objectName(), *window_);
    menu->close();
    Settle();
  }
}

void WindowTour::ShowSelections() {
  user_.Expect("frmBegEnd", [this](QDialog& window) {
    ExpectMessage("message-no-date");
    Child<QPushButton>(window, "cmdOK").click();
    Child<QLineEdit>(window, "txtDate0").setText("30.2.2026");
    ExpectMessage("message-bad-date");
    Child<QPushButton>(window, "cmdOK").click();
    Child<QPushButton>(window, "cmdCurYear").click();
    Visit("period", window);
    Child<QPushButton>(window, "cmdOK").click();
  });
  Trigger(CommandId::mnuSortDateAllXP);
  Visit("log-panoramic", *window_);
}

void WindowTour::ShowPatientSearch() {
  user_.Expect("frmPatSearch", [this](QDialog& window) {
    Visit("patient-search", window);
    auto& box = Child<QLineEdit>(window, "txtSearch");
    box.setText("Xyz");
    ExpectMessage("message-no-patient");
    Child<QPushButton>(window, "cmdSearch").click();
    box.setText("O'Hara");
    ExpectMessage("message-apostrophe");
    Child<QPushButton>(window, "cmdSearch").click();
    box.setText(Grid().CellText(0, logview::kPatientColumn).left(1));
    Child<QPushButton>(window, "cmdSearch").click();
    Visit("patient-search-hits", window);
    user_.Expect("frmBegEnd", [](QDialog& period) {
      Child<QPushButton>(period, "cmdCurYear").click();
      Child<QPushButton>(period, "cmdOK").click();
    });
    Child<QPushButton>(window, "cmdOK").click();
  });
  Trigger(CommandId::mnuSortPatPeriod);
  Visit("log-patient-period", *window_);
}

void WindowTour::ShowProgramWindows() {
  user_.Expect("frmProperties", [this](QDialog& window) {
    Visit("properties-file", window);
    ExpectMessage("message-compact-pending");
    ExpectMessage("message-compacted");
    Child<QPushButton>(window, "cmdCompact").click();
    window.findChild<QTabWidget*>()->setCurrentIndex(1);
    Visit("properties-program", window);
    Child<QPushButton>(window, "cmdClose").click();
  });
  Trigger(CommandId::mnuViewProperties);
  user_.Expect("frmVerify", [this](QDialog& window) {
    Child<QPushButton>(window, "cmdVerify").click();
    Visit("verify", window);
    Child<QPushButton>(window, "cmdClose").click();
  });
  Trigger(CommandId::mnuFileVerify);
  ExpectAndPress("frmSettings", "settings", "cmdCancel");
  Trigger(CommandId::mnuViewSettings);
  ExpectAndPress("frmInspection", "inspection", "cmdCancel");
  Trigger(CommandId::mnuFileInspection);
  ExpectAndPress("frmBackup", "backup", "cmdClose");
  Trigger(CommandId::mnuFileBackup);
  ExpectAndPress("frmAbout", "about", "cmdOK");
  Trigger(CommandId::mnuHelpInfo);
  ExpectAndPress("frmSupport", "support", "cmdClose");
  Trigger(CommandId::mnuHelpSupport);
  user_.Expect("CFileDialog", [this](QDialog& window) {
    Visit("open-file", window);
    window.reject();
  });
  Trigger(CommandId::mnuFileOpen);
  ExpectMessage("message-nothing-new");
  Trigger(CommandId::mnuEditUpdate);
}

void WindowTour::ShowHelp() {
  const auto helpWindow = []() -> QWidget& {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->objectName() == "frmHelp") return *window;
    }
    throw std::runtime_error("no help window");
  };
  Trigger(CommandId::mnuHelpContents);
  // The list of pages is read in a thread of its own.
  const auto* pages = helpWindow().findChild<QTreeView*>("trvContents");
  for (QDeadlineTimer patience(5000); pages->model()->rowCount() == 0 && !patience.hasExpired();) Settle();
  Visit("help-contents", helpWindow());
  Trigger(CommandId::mnuHelpIndex);
  Visit("help-index", helpWindow());
  Trigger(CommandId::mnuHelpSearch);
  Visit("help-search", helpWindow());
  helpWindow().close();
  window_->activateWindow();
  Settle();
}

void WindowTour::ShowPrinting() {
  ExpectMessage("message-no-printer");
  Trigger(CommandId::mnuFilePrint);
  const TwoPrinters printers;
  report::PrintChoices choices;
  choices.copies = 2;
  choices.allPages = false;
  report::frmPrinter printer(window_.get(), printers, texts_, choices);
  printer.show();
  Visit("printer", printer);
  printer.hide();
  report::frmPrinterSetup setUp(window_.get(), printers, texts_, {}, QPageSize(QPageSize::A4));
  setUp.show();
  Visit("printer-setup", setUp);
  setUp.hide();
  Trigger(CommandId::mnuFilePrintPreview);
  Visit("preview", *window_);
  if (QMdiSubWindow* preview = window_->findChild<QMdiArea*>()->activeSubWindow()) preview->close();
  Settle();
}

void WindowTour::ShowOtherStates() {
  Trigger(CommandId::mnuViewBigIcons);
  Visit("small-icons", *window_);
  Trigger(CommandId::mnuViewBigIcons);
  globals_.ReadOnlyGl = true;
  Trigger(CommandId::mnuSortAll);
  Grid().SetAllowUpdate(false);
  Visit("log-read-only", *window_);
  globals_.ReadOnlyGl = false;
  Grid().SetAllowUpdate(true);
  window_->Results()->parentWidget()->close();
  Visit("desk", *window_);
  user_.Expect("frmBegEnd", [](QDialog& window) {
    Child<QLineEdit>(window, "txtDate0").setText("2001-01-01");
    Child<QLineEdit>(window, "txtDate1").setText("2001-12-31");
    Child<QPushButton>(window, "cmdOK").click();
  });
  Trigger(CommandId::mnuSortDateAll);
  Visit("log-empty", *window_);
}

void WindowTour::ShowConversion() {
  app::frmConvert progress(window_.get(), texts_, messages_);
  progress.Begin(legacy::ConversionStep::kTakingOver, 18'792);
  progress.show();
  while (progress.findChild<QProgressBar*>()->value() == 0) (void)progress.Advance(7'500);
  Visit("convert", progress);
  progress.hide();
  ui::CFileDialog::AnswerWith([this](const ui::CFileDialog&) { return oldLog_; });
  ExpectMessage("message-convert", false);
  Trigger(CommandId::mnuFileOpen);
  ui::CFileDialog::AnswerWith({});
}

void WindowTour::Quit() {
  ExpectMessage("message-quit");
  window_->close();
  Settle();
  user_.Check();
}

int WindowTour::FirstRow(int column, ui::CellState state) const {
  constexpr int kRowsInSight = 20;
  for (int row = 0; row < kRowsInSight; ++row) {
    if (Grid().StateOf(row, column) == state) return row;
  }
  throw std::runtime_error("no such cell in column " + std::to_string(column));
}

void WindowTour::Enter(int row, int column, const QString& text) {
  Grid().SetCurrentCell(row, column);
  Grid().setFocus();
  Press(&Grid(), Qt::Key_F2);
  auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
  if (editor == nullptr) throw std::runtime_error("no editor");
  editor->setText(text);
  Press(editor, Qt::Key_Return);
}

}  // namespace varnlog::tools
