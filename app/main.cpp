#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QTranslator>

#include "app/ServerWait.h"
#include "app/SingleInstance.h"
#include "app/frmMDIMain.h"
#include "core/Installation.h"
#include "core/Messages.h"
#include "db/dao/DBEngine.h"
#include "db/dao/WarmUp.h"
#include "db/modCommon.h"
#include "legacy/LoadTables.h"
#include "platform/Desktop.h"
#include "platform/Files.h"
#include "start/InspectionSettings.h"
#include "start/Language.h"
#include "start/modINIFile.h"
#include "ui/KeyNames.h"
#include "ui/MessageBox.h"
#include "ui/QtText.h"
#include "ui/QtTexts.h"

namespace {

using namespace varnlog;
using core::literals::operator""_key;

enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUsage = 2 };

struct Arguments {
  QString folder;
  QString language;
  app::StartedWith started;
};

[[noreturn]] void EndWithUsage(const QString& fault) {
  std::fprintf(stderr, "varnlog: %s\nvarnlog --help explains the usage.\n", qUtf8Printable(fault));
  std::exit(kWrongUsage);
}

/// --help and --version end the program here, before a display is needed or anything is opened.
Arguments ParseArguments(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName("varnlog");
  QCoreApplication::setApplicationVersion(VARNLOG_VERSION);
  QCommandLineParser parser;
  parser.setApplicationDescription("The X-ray exposure log book of a dental practice.");
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption folder(
      "folder", "The program folder; unless given that of VARNLOG_FOLDER, else the executable's own.", "DIR");
  const QCommandLineOption language(
      "language", "D, GB, E, I, F, NL or CYR for this run; the setting of varnlog.ini unless given.", "CODE");
  const QCommandLineOption inspect(
      "inspect",
      "Only look at FILE: nothing is changed, taken in or remembered, no imaging suite is needed.");
  parser.addOptions({folder, language, inspect});
  parser.addPositionalArgument("FILE", "The log to open in this run; that of varnlog.ini unless given.",
                               "[FILE]");
  if (!parser.parse(QCoreApplication::arguments())) EndWithUsage(parser.errorText());
  if (parser.isSet(help)) parser.showHelp();
  if (parser.isSet(version)) parser.showVersion();
  const QStringList files = parser.positionalArguments();
  if (files.size() > 1) EndWithUsage("only one log can be opened.");
  if (parser.isSet(inspect) && files.isEmpty()) EndWithUsage("--inspect needs the log to look at.");
  // The program goes to its own folder before it opens anything.
  const QString file = files.isEmpty() ? QString() : QFileInfo(files.constFirst()).absoluteFilePath();
  return {parser.value(folder),
          parser.value(language),
          {ui::FromQString(QDir::toNativeSeparators(file)), parser.isSet(inspect)}};
}

/// What no window has caught, a failing allocation above all, ends in a message and not in the program's end.
class Application final : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    try {
      return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "varnlog: %s\n", error.what());
      if (!telling_) Tell(error.what());
      return false;
    }
  }

 private:
  void Tell(const char* reason) {
    telling_ = true;
    try {
      QMessageBox box(QMessageBox::Critical, {}, QString::fromUtf8(reason));
      box.setTextFormat(Qt::PlainText);
      box.exec();
    } catch (const std::exception&) {
      std::fputs("varnlog: nothing more can be shown\n", stderr);
    }
    telling_ = false;
  }

  bool telling_ = false;
};

/// The one text that cannot come from the language database.
void ShowFatal(ui::MessageBox& user) {
  user.Show({"Couldn't access language ressources. Application is terminating now.", "Error",
             core::MessageIcon::kCritical, core::MessageButtons::kOk});
}

int RunProgram(core::Globals& globals, const Arguments& arguments) {
  const std::string givenLanguage = ui::FromQString(arguments.language);
  const app::StartedWith& started = arguments.started;
  app::SingleInstance instance(globals.ProgramFolderGl);
  // Who only looks disturbs nobody.
  const bool first = started.isInspection || instance.Claim();
  if (first) dao::WarmUp();
  legacy::InstallJetFormat();
  start::Language texts(globals);
  const app::ServerWait serverWait(texts, dao::DBEngine::Instance());
  ui::MessageBox user(texts);
  start::modINIFile ini;
  if (first && !started.isInspection) {
    platform::SystemLauncher launcher;
    start::RegisterReportComponents(launcher);
  }
  const bool hasTexts = texts.InitLanguage();
  if (!first) {
    if (!hasTexts || instance.ActivateOther(ui::ToQString(started.file))) return kDone;
    texts.SetLanguage(ini.ReadString("App", "Language", globals.IniFileGl));
    core::Messages(user, texts)
        .Critical("MN_ERR_RUNNING"_key, {{"strFile", ui::FromQString(instance.LockFile())}});
    return kFailed;
  }
  if (!hasTexts) {
    ShowFatal(user);
    return kFailed;
  }
  const std::string language =
      givenLanguage.empty() ? ini.ReadString("App", "Language", globals.IniFileGl) : givenLanguage;
  if (!texts.SetLanguage(language) && !language.empty()) {
    std::fprintf(stderr, "varnlog: there is no language %s; %s is used\n", language.c_str(),
                 globals.LanguageGl.c_str());
  }
  ini = start::modINIFile(globals.LanguageGl);
  QTranslator translator;
  ui::TranslateQt(translator, globals.LanguageGl);
  ui::KeyNames keyNames(texts);
  QCoreApplication::installTranslator(&keyNames);

  const platform::SystemClock clock;
  const platform::ShortDate shortDate = platform::ShortDate::FromSystem();
  const start::HostToothScheme scheme(globals, ini);
  start::InspectionSettings forgetting(ini);
  core::SettingsStore& settings = started.isInspection ? static_cast<core::SettingsStore&>(forgetting) : ini;
  app::frmMDIMain window({globals, {settings, texts, user, clock}, scheme, shortDate, started});
  user.SetParent(&window);
  instance.OnActivation([&window](const QString& file) {
    window.BringToFront();
    window.OpenWhenFree(ui::FromQString(file), app::OpenFor::kThisRun);
  });
  QObject::connect(qApp, &QGuiApplication::commitDataRequest, &window,
                   [&window] { window.KeepForSessionEnd(); });
  return window.Load() ? QApplication::exec() : kFailed;
}

/// The system's own look where there is one. It has no dark form on every system; the toolkit's has.
void FollowDesktop() {
  platform::IntroduceToDesktop();
  if (!platform::WantsDarkWindows() || qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return;
  qputenv("QT_QPA_PLATFORM", "windows:darkmode=2");
  QApplication::setStyle(QStringLiteral("fusion"));
}

int Run(int argc, char** argv) {
  const Arguments arguments = ParseArguments(argc, argv);
  FollowDesktop();
  const Application application(argc, argv);

  core::Globals globals;
  core::SetProgramFolder(globals, ui::FromQString(arguments.folder));
  if (!db::ChangeToFolder(globals.ProgramFolderGl)) {
    std::fprintf(stderr, "varnlog: the program folder %s cannot be entered\n",
                 globals.ProgramFolderGl.c_str());
    return kFailed;
  }
  return RunProgram(globals, arguments);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "varnlog: %s\n", error.what());
    return kFailed;
  }
}
