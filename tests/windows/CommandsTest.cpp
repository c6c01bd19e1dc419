#include <algorithm>
#include <set>

#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QProgressBar>
#include <QStatusBar>
#include <QTreeWidget>

#include "logview/Columns.h"
#include "report/frmPreview.h"
#include "tests/support/TestFolder.h"
#include "tests/windows/MainWindow.h"
#include "tools/exchange/ExposureGenerator.h"
#include "ui/FileDialog.h"
#include "ui/QtText.h"

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;
using enum CommandId;

class Commands : public MainWindow {
 protected:
  // No printer of the machine may come into it.
  void SetUp() override {
    qputenv("CUPS_SERVER", "/nonexistent/cups");
    MainWindow::SetUp();
  }
  void TearDown() override { ui::CFileDialog::AnswerWith({}); }

  void StartsQuietly() {
    Starts();
    (void)TakeMessages();
  }
  void OpensFile(const std::optional<fs::path>& file) {
    ui::CFileDialog::AnswerWith(
        [file](const ui::CFileDialog&) { return file ? std::optional(file->string()) : std::nullopt; });
    Triggers(mnuFileOpen);
  }
  [[nodiscard]] std::set<CommandId> Enabled() {
    std::set<CommandId> enabled;
    for (const CommandDef& command : AllCommands()) {
      if (Window().Action(command.id)->isEnabled()) enabled.insert(command.id);
    }
    return enabled;
  }
  /// The recently used files as the menu shows them, without their numbers.
  [[nodiscard]] std::vector<fs::path> Recent() {
    std::vector<fs::path> files;
    for (const QAction* action : RecentActions())
      files.push_back(platform::ToPath(action->text().mid(4).toStdString()));
    return files;
  }
  [[nodiscard]] QList<QAction*> RecentActions() {
    QList<QAction*> recent;
    for (QAction* action : Child<QMenu>(Window(), "mnuFile").actions()) {
      if (action->text().startsWith('&') && action->text().mid(2, 2) == ". ") recent << action;
    }
    return recent;
  }
  [[nodiscard]] fs::path NewLog(const char* name) const {
    fs::path file = installation_.suite() / platform::ToPath(name);
    fs::copy_file(installation_.program() / "varnlog.md0", file);
    return file;
  }
  void TogglesReadOnly() {
    InDialog("frmProperties", [](QDialog& dialog) {
      Child<QCheckBox>(dialog, "chkReadOnly").click();
      Child<QPushButton>(dialog, "cmdClose").click();
    });
    Triggers(mnuViewProperties);
  }
  void ClosesLogView() {
    Window().Results()->parentWidget()->close();
    Settle();
  }
  void Activates() {
    emit qApp->applicationStateChanged(Qt::ApplicationActive);
    QTest::qWait(400);
  }
  [[nodiscard]] std::string IniValue(const char* section, const char* key) const {
    return start::modINIFile().ReadString(section, key, (installation_.program() / "varnlog.ini").string());
  }
  [[nodiscard]] std::string ReadOnlyInLog() const {
    std::string value;
    installation_.WithLog(false, [&](dao::Database& log) {
      const auto row = log.OpenRecordset("SELECT TConfig.* From TConfig WHERE (TConfig.tCfgSKey='ReadOnly')");
      value = row->Fields("tCfgSSet").Text();
    });
    return value;
  }
};

TEST_F(Commands, AreEnabledByWhatIsOpen) {
  const std::set<CommandId> always = {mnuFileOpen,     mnuFileEnd,    mnuViewToolbar,  mnuViewStatusbar,
                                      mnuViewBigIcons, mnuHelpOnHelp, mnuHelpContents, mnuHelpIndex,
                                      mnuHelpSearch,   mnuHelpInfo,   mnuHelpSupport,  mnuViewProperties,
                                      mnuViewHistory,  mnuFileBackup, mnuViewSettings};
  const std::set<CommandId> withLog = {mnuSortPatAll,    mnuSortPatPeriod, mnuSortDateAll,
                                       mnuSortDateAllXI, mnuSortDateAllXP, mnuSortDateAllXC,
                                       mnuSortDateAllXS, mnuSortDateAllXV, mnuSortAll,
                                       mnuViewLoad,      mnuFileVerify,    mnuFileInspection};
  const std::set<CommandId> withView = {
      mnuFilePrint,      mnuFilePrintPreview, mnuFilePrintSetup,      mnuFileExport,    mnuEditFind,
      mnuEditIncomplete, mnuEditNextMissing,  mnuEditPreviousMissing, mnuViewStatistics};
  const auto both = [](std::set<CommandId> a, std::set<CommandId> b) {
    a.merge(b);
    return a;
  };
  StartsQuietly();
  const std::set<CommandId> open = both(always, withLog);
  EXPECT_EQ(Enabled(), both(both(open, withView), {mnuEditUpdate}));
  TogglesReadOnly();
  EXPECT_EQ(Enabled(), both(open, withView)) << "read-only";
  ClosesLogView();
  EXPECT_EQ(Enabled(), open) << "without the view";
  OpensFile(installation_.program() / "verbalo.mdb");
  EXPECT_EQ(Enabled(), both(open, withView)) << "what was open is open again";
  program_.reset();
  fs::remove(installation_.log());
  fs::copy_file(installation_.program() / "verbalo.mdb", installation_.log());
  ui::CFileDialog::AnswerWith([](const ui::CFileDialog&) { return std::nullopt; });
  StartsQuietly();
  EXPECT_EQ(Enabled(), always) << "nothing is open";
  EXPECT_EQ(Window().windowTitle(), Text("MN_CAPTION"_key));
}

TEST_F(Commands, AnotherLogIsMarkedAndGetsExposuresOnlyOnPurpose) {
  StartsQuietly();
  const auto& mark = Child<QLabel>(Window(), "pnlOtherLog");
  EXPECT_FALSE(mark.isVisible());
  EXPECT_EQ(Recent(), std::vector<fs::path>{installation_.log()}) << "opened at start";
  const fs::path archive = NewLog("Archiv.mdb");
  OpensFile(archive);
  EXPECT_TRUE(mark.isVisible());
  EXPECT_TRUE(Window().windowTitle().contains(Text("MN_OTHERLOG"_key)));
  installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2022", "08:00:00")});
  Activates();
  EXPECT_EQ(Grid().ApproximateCount(), 0) << "never on activation";
  program_->AnswersFirst({core::MessageAnswer::kNo});
  Triggers(mnuEditUpdate);
  EXPECT_TRUE(TakeMessages().value(0).contains(QString::fromStdString(archive.string())));
  EXPECT_EQ(Grid().ApproximateCount(), 0);
  OpensFile(installation_.log());
  EXPECT_FALSE(mark.isVisible());
  EXPECT_EQ(Grid().ApproximateCount(), 5);
}

TEST_F(Commands, ExportExactlyWhatIsShown) {
  StartsQuietly();
  ClicksHeading(logview::kPatientColumn);
  Grid().SetColumnShown(logview::kDoseColumn, false);
  std::vector<std::string> proposed;
  const fs::path file = installation_.suite() / platform::ToPath("Übergabe.json");
  ui::CFileDialog::AnswerWith([&](const ui::CFileDialog& dialog) {
    proposed.push_back(dialog.FileName());
    return file.string();
  });
  Triggers(mnuFileExport);
  EXPECT_TRUE(TakeMessages().value(0).contains(QString::fromStdString(file.string())));
  EXPECT_TRUE(proposed.at(0).ends_with(".xlsx"));
  const QString exported = QString::fromStdString(varnlog::test::ReadFile(file));
  EXPECT_FALSE(exported.contains("mGycm2"));
  qsizetype at = 0;
  for (const QString& patient : ColumnTexts(logview::kPatientColumn)) {
    at = exported.indexOf('"' + patient + '"', at + 1);
    EXPECT_GT(at, 0) << patient.toStdString();
  }
}

TEST_F(Commands, OpenAnotherLogAndKnowTheLastOnes) {
  StartsQuietly();
  const int beeps = program_->Beeps();
  OpensFile(std::nullopt);
  EXPECT_EQ(program_->Beeps(), beeps + 1);
  EXPECT_EQ(Grid().ApproximateCount(), 4) << "cancelled";

  const fs::path first = installation_.log();
  const fs::path second = NewLog("b.mdb");
  const fs::path third = NewLog("e 'ü'.mdb");
  for (const fs::path& log : {second, third}) {
    OpensFile(log);
    EXPECT_EQ(Globals().strDataFileGl, log.string());
    EXPECT_EQ(Grid().ApproximateCount(), 0);
  }
  EXPECT_EQ(Recent(), (std::vector{third, second, first}));
  EXPECT_TRUE(TakeMessages().isEmpty());

  // A file that is none, and one that is gone.
  OpensFile(installation_.suite() / "kalvero.ini");
  fs::remove(second);
  RecentActions().at(1)->trigger();
  const QStringList messages = TakeMessages();
  ASSERT_EQ(messages.size(), 2) << messages.join('\n').toStdString();
  EXPECT_TRUE(messages.at(1).contains(QString::fromStdString(second.string())));
  EXPECT_EQ(Recent(), (std::vector{third, second, first})) << "only what was opened comes to the head";
  EXPECT_EQ(Globals().strDataFileGl, third.string());
  EXPECT_NE(Window().Results(), nullptr) << "and is open again";

  RecentActions().at(2)->trigger();
  Settle();
  EXPECT_EQ(Globals().strDataFileGl, first.string());
  StartsQuietly();
  EXPECT_EQ(Recent(), (std::vector{first, third, second}));
}

TEST_F(Commands, ViewOptionsAreKeptUntilTheNextStart) {
  const auto shown = [this] {
    const auto& toolbar = Child<ui::Toolbar>(Window(), "tlbStandard");
    return std::array{toolbar.isVisible(), Window().statusBar()->isVisible(),
                      toolbar.iconSize() == QSize(32, 32)};
  };
  StartsQuietly();
  std::array<bool, 3> expected = {true, true, true};
  EXPECT_EQ(shown(), expected);
  const CommandId commands[] = {mnuViewToolbar, mnuViewStatusbar, mnuViewBigIcons};
  for (std::size_t i = 0; i < 3; ++i) {
    Triggers(commands[i]);
    expected.at(i) = false;
    EXPECT_EQ(shown(), expected) << Def(commands[i]).name;
  }
  StartsQuietly();
  EXPECT_EQ(shown(), expected);
  for (const CommandId command : commands) EXPECT_FALSE(Window().Action(command)->isChecked());
  Triggers(mnuViewToolbar);
  EXPECT_TRUE(Child<ui::Toolbar>(Window(), "tlbStandard").isVisible());
}

TEST_F(Commands, TheDeskTakesThePlaceOfWindowsThatCannotBeSeen) {
  StartsQuietly();
  const auto logView = [this] { return dynamic_cast<QMdiSubWindow*>(Window().Results()->parentWidget()); };
  const auto& desk = Child<QWidget>(Window(), "desk");
  ClosesLogView();
  ASSERT_TRUE(desk.isVisible());
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  Settle();
  EXPECT_FALSE(desk.isVisible());
  ASSERT_NE(Window().Results(), nullptr) << "the first choice shows the log";
  for (const CommandId command : {mnuViewLoad, mnuSortAll}) {
    for (const bool closes : {false, true}) {
      closes ? ClosesLogView() : logView()->showMinimized();
      Settle();
      EXPECT_TRUE(desk.isVisible());
      Triggers(command);
      EXPECT_TRUE(Grid().isVisible() && !logView()->isMinimized()) << Def(command).name;
    }
  }
  logView()->showNormal();
  EXPECT_GT(logView()->width(), Window().width() / 2);
  OpensFile(NewLog("anderes.mdb"));
  OpensFile(installation_.log());
  ClosesLogView();
  ASSERT_TRUE(desk.isVisible());
  const auto buttons = desk.findChildren<QAbstractButton*>();
  const auto recent =
      std::ranges::find_if(buttons, [](const auto* button) { return button->text() == "anderes.mdb"; });
  ASSERT_NE(recent, buttons.end());
  (*recent)->click();
  Settle();
  EXPECT_FALSE(desk.isVisible());
}

TEST_F(Commands, AMaximisedWindowStaysSoThroughTheIconState) {
  StartsQuietly();
  const auto minimises = [this] {
    Window().setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    ASSERT_TRUE(Window().isMinimized());
  };
  minimises();
  Window().BringToFront();
  EXPECT_EQ(Window().windowState() & ~Qt::WindowActive, Qt::WindowMaximized);
  minimises();
  ASSERT_TRUE(Quits());
  const std::string place = IniValue("Form Positions", "frmMDIMain");
  EXPECT_TRUE(place.ends_with("S=2")) << place;
}

TEST_F(Commands, PropertiesProtectTheLogAndWorkOnItsFile) {
  StartsQuietly();
  Enters(0, kVoltageColumn, "65");
  InDialog("frmProperties", [this](QDialog& dialog) {
    EXPECT_EQ(Child<QLabel>(dialog, "lblPath").text().toStdString(), installation_.log().string());
    EXPECT_EQ(Child<QLabel>(dialog, "lblVersion").text(), "1.1");
    EXPECT_EQ(Child<QLabel>(dialog, "lblRows").text(), "4");
    Child<QCheckBox>(dialog, "chkUpdateOnActivation").click();
    for (const auto& [button, key] :
         {std::pair("cmdCompact", "PP_COMPACT_DONE"_key), std::pair("cmdRepair", "PP_REPAIR_DONE"_key)}) {
      Child<QPushButton>(dialog, button).click();
      const QStringList messages = TakeMessages();
      ASSERT_FALSE(messages.isEmpty()) << button;
      EXPECT_TRUE(messages.last().startsWith(Text(key).section('$', 0, 0))) << messages.last().toStdString();
    }
    Child<QCheckBox>(dialog, "chkReadOnly").click();
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  Triggers(mnuViewProperties);
  ASSERT_TRUE(program_->DialogsDone());
  EXPECT_EQ(ReadOnlyInLog(), "1");
  EXPECT_EQ(Grid().ApproximateCount(), 4);
  EXPECT_EQ(Grid().StateOf(0, kVoltageColumn), ui::CellState::kLocked) << "the log was closed";
  Enters(1, kVoltageColumn, "66");
  EXPECT_NE(Grid().CellText(1, kVoltageColumn), "66") << "read-only";
  EXPECT_TRUE(Child<QLabel>(Window(), "pnlReadOnly").isVisible());

  installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2022", "08:00:00")});
  StartsQuietly();
  EXPECT_EQ(IniValue("User", "UpdateOnActivation"), "0");
  EXPECT_EQ(Grid().ApproximateCount(), 4) << "no update is offered";
  Globals().UpdateOnActivation = true;
  Activates();
  EXPECT_EQ(Grid().ApproximateCount(), 4) << "nor made";
  TogglesReadOnly();
  Enters(1, kVoltageColumn, "66");
  EXPECT_EQ(Grid().CellText(1, kVoltageColumn), "66");
  ClosesLogView();
  Activates();
  EXPECT_TRUE(fs::exists(installation_.exchangeFile())) << "no update without the view";
}

TEST_F(Commands, ALogThatDoesNotOpenCanBeRepaired) {
  StartsQuietly();
  installation_.WithLog(
      false, [](dao::Database& log) { log.Execute("DELETE FROM TConfig WHERE tCfgSKey = 'DBVersion'"); });
  InDialog("frmProperties", [this](QDialog& dialog) {
    EXPECT_EQ(Child<QLabel>(dialog, "lblPath").text().toStdString(), installation_.log().string());
    EXPECT_TRUE(Child<QPushButton>(dialog, "cmdRepair").isEnabled());
    EXPECT_FALSE(Child<QPushButton>(dialog, "cmdCompact").isEnabled());
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  OpensFile(installation_.log());
  EXPECT_TRUE(program_->DialogsDone());
  EXPECT_EQ(TakeMessages().value(0), Text("MN_ERR_CONFIG"_key));
  EXPECT_TRUE(Window().Action(mnuViewProperties)->isEnabled()) << "nor does it go away";
}

TEST_F(Commands, PreviewIsAChildWindowAndPrintingNeedsAPrinter) {
  StartsQuietly();
  for (const CommandId command : {mnuFilePrint, mnuFilePrintSetup}) {
    Triggers(command);
    EXPECT_EQ(TakeMessages(), QStringList(Text("MN_ERR_NOPRINTER"_key))) << Def(command).name;
  }
  Triggers(mnuFilePrintPreview);
  const auto* preview = dynamic_cast<report::frmPreview*>(Window().findChild<QWidget*>("frmPreview"));
  ASSERT_NE(preview, nullptr);
  EXPECT_EQ(preview->windowTitle(), Text("MN_PRINTPREVIEW"_key));
  EXPECT_TRUE(preview->parentWidget()->isMaximized());
  EXPECT_EQ(preview->PageCount(), 1);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  Settle();
  EXPECT_EQ(Window().findChild<QWidget*>("frmPreview"), nullptr) << "keys work from the start";
  // It shows rows that are no longer those of the log view.
  const std::function<void()> changes[] = {[this] { OpensFile(NewLog("anderes.mdb")); },
                                           [this] { Triggers(mnuSortAll); },
                                           [this] { Triggers(mnuViewLoad); }, [this] { ClosesLogView(); }};
  for (const auto& change : changes) {
    Triggers(mnuFilePrintPreview);
    ASSERT_NE(Window().findChild<QWidget*>("frmPreview"), nullptr);
    change();
    Settle();
    EXPECT_EQ(Window().findChild<QWidget*>("frmPreview"), nullptr);
  }
}

TEST_F(Commands, TheAboutBoxNamesVersionAndLibraries) {
  StartsQuietly();
  InDialog("frmAbout", [](QDialog& dialog) {
    QString shown;
    for (const QLabel* label : dialog.findChildren<QLabel*>()) shown += label->text() + '\n';
    EXPECT_TRUE(shown.contains("1.1")) << shown.toStdString();
    const auto& libraries = Child<QTreeWidget>(dialog, "lvwLibraries");
    EXPECT_GE(libraries.topLevelItemCount(), 4);
    for (int i = 0; i < libraries.topLevelItemCount(); ++i) {
      EXPECT_FALSE(libraries.topLevelItem(i)->text(libraries.columnCount() - 1).isEmpty())
          << i << ": no licence";
    }
    Child<QPushButton>(dialog, "cmdOK").click();
  });
  Triggers(mnuHelpInfo);
  EXPECT_TRUE(program_->DialogsDone());
}

TEST_F(Commands, SupportInformationTellsAllButPatients) {
  Starts();
  program_->InDialog("frmVerify", [](QDialog& dialog) {
    Child<QPushButton>(dialog, "cmdVerify").click();
    dialog.reject();
  });
  program_->Triggers(mnuFileVerify);
  program_->InDialog("frmSupport", [this](QDialog& dialog) {
    Child<QPushButton>(dialog, "cmdCopy").click();
    const QString copied = QApplication::clipboard()->text();
    for (const QString& part : {QString("SQLite"), QString::fromStdString(installation_.log().string()),
                                program_->Text("AB_SOUND"_key), program_->Text("PP_ROWS"_key) + " 4"})
      EXPECT_TRUE(copied.contains(part)) << part.toStdString() << " in " << copied.toStdString();
    EXPECT_FALSE(copied.contains("Zander"));
    dialog.reject();
  });
  program_->Triggers(mnuHelpSupport);
  EXPECT_TRUE(program_->DialogsDone());
}

/// The user presses the button as soon as the run shows that it is on its way: before that, it would only
/// close the dialog. To be there in time, it waits for the dialog to be shown.
class CancelsAtOnce final : public QObject {
 public:
  CancelsAtOnce() { QApplication::instance()->installEventFilter(this); }

 private:
  bool eventFilter(QObject* object, QEvent* event) override {
    auto* dialog = qobject_cast<QDialog*>(object);
    if (event->type() != QEvent::Show || dialog == nullptr || dialog->objectName() != "frmRunUpdate")
      return false;
    QObject::connect(
        &Child<QProgressBar>(*dialog, "prgBar"), &QProgressBar::valueChanged, dialog,
        [dialog] { Child<QPushButton>(*dialog, "cmdCancel").click(); }, Qt::SingleShotConnection);
    return false;
  }
};

class LongUpdate : public Commands {
 protected:
  void SetUp() override {
    qputenv("CUPS_SERVER", "/nonexistent/cups");
    Starts(core::MessageAnswer::kYes);
    tools::GeneratorOptions options;
    options.count = kExposures;
    options.invalidPercent = 0;
    options.informationPercent = 0;
    options.repeatedPercent = 0;
    tools::ExposureGenerator generator(options);
    std::vector<tools::Exposure> exposures;
    for (std::int64_t i = 0; i < options.count; ++i) exposures.push_back(generator.Next());
    installation_.Reports(exposures);
    reported_ = fs::file_size(installation_.exchangeFile());
  }
  /// Cancels, is asked, comes back from another program, and presses `button`.
  void Cancels(const char* button) {
    const CancelsAtOnce user;
    InDialog("frmCancelUpdate", [this, button](QDialog& dialog) {
      Activates();
      EXPECT_EQ(QApplication::activeModalWidget(), &dialog) << "a second update in the first";
      Child<QPushButton>(dialog, button).click();
    });
    Triggers(mnuEditUpdate);
    EXPECT_TRUE(program_->DialogsDone());
  }
  static constexpr std::int64_t kExposures = 50;
  std::uintmax_t reported_ = 0;
};

TEST_F(LongUpdate, CancelledInTheMiddleLeavesLogAndExchangeFileAsTheyWere) {
  Cancels("cmdCancel");
  EXPECT_EQ(Grid().ApproximateCount(), 0);
  EXPECT_EQ(fs::file_size(installation_.exchangeFile()), reported_);
  EXPECT_TRUE(Globals().UpdateDeclinedGl);
  EXPECT_TRUE(TakeMessages().isEmpty());
  Activates();
  EXPECT_EQ(fs::file_size(installation_.exchangeFile()), reported_) << "activating starts no update any more";

  Cancels("cmdUpdate");
  EXPECT_TRUE(QTest::qWaitFor([this] { return Window().Results()->IsPopulated(); }, 10'000));
  EXPECT_EQ(Grid().ApproximateCount(), kExposures) << "thought better of it";
  EXPECT_FALSE(fs::exists(installation_.exchangeFile()));
  EXPECT_FALSE(Globals().UpdateDeclinedGl);
  const fs::path folder = installation_.exchangeFile().parent_path();
  const auto isMovedAside = [](const fs::directory_entry& entry) {
    return entry.path().extension() == ".taken";
  };
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return std::none_of(fs::directory_iterator(folder), fs::directory_iterator(), isMovedAside); },
      15'000))
      << "what was moved aside holds the names of patients";
}

}  // namespace
}  // namespace varnlog::app::test
