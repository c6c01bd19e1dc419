#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTranslator>

#include "app/SingleInstance.h"
#include "app/frmMDIMain.h"
#include "core/Installation.h"
#include "core/Messages.h"
#include "db/modCommon.h"
#include "legacy/LoadTables.h"
#include "platform/Files.h"
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
  parser.addOptions({folder, language});
  if (!parser.parse(QCoreApplication::arguments())) EndWithUsage(parser.errorText());
  if (parser.isSet(help)) parser.showHelp();
  if (parser.isSet(version)) parser.showVersion();
  if (const QStringList more = parser.positionalArguments(); !more.isEmpty()) {
    EndWithUsage(QStringLiteral("'%1' is no option.").arg(more.constFirst()));
  }
  return {parser.value(folder), parser.value(language)};
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

int RunProgram(core::Globals& globals, const std::string& givenLanguage) {
  app::SingleInstance instance(globals.ProgramFolderGl);
  const bool first = instance.Claim();
  legacy::InstallJetFormat();
  start::Language texts(globals);
  ui::MessageBox user(texts);
  start::modINIFile ini;
  if (first) {
    platform::SystemLauncher launcher;
    start::RegisterReportComponents(launcher);
  }
  const bool hasTexts = texts.InitLanguage();
  if (!first) {
    if (!hasTexts || instance.ActivateOther()) return kDone;
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
  app::frmMDIMain window({globals, {ini, texts, user, clock}, scheme, shortDate});
  user.SetParent(&window);
  instance.OnActivation([&window] { window.BringToFront(); });
  return window.Load() ? QApplication::exec() : kFailed;
}

int Run(int argc, char** argv) {
  const Arguments arguments = ParseArguments(argc, argv);
  const Application application(argc, argv);

  core::Globals globals;
  core::SetProgramFolder(globals, ui::FromQString(arguments.folder));
  if (!db::ChangeToFolder(globals.ProgramFolderGl)) {
    std::fprintf(stderr, "varnlog: the program folder %s cannot be entered\n",
                 globals.ProgramFolderGl.c_str());
    return kFailed;
  }
  return RunProgram(globals, ui::FromQString(arguments.language));
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
