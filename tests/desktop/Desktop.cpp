#include "tests/desktop/Desktop.h"

#include <stdexcept>
#include <thread>
#include <unistd.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>

#include "tests/Paths.h"

namespace varnlog::desktop {

namespace {

constexpr int kPatience = 60'000;  // milliseconds; machines that build beside the test are slow
constexpr auto kBetweenLooks = std::chrono::milliseconds(30);

QString Plain(QString text) {
  return text.remove('&');
}

std::string Dump(const Screen& screen) {
  QString text;
  for (const Part& part : screen) {
    if (part.Role() == "Cell") continue;
    text += QJsonDocument(part.Facts()).toJson(QJsonDocument::Compact) + '\n';
  }
  return text.toStdString();
}

void Require(bool done, const std::string& what) {
  if (!done) throw std::runtime_error(what);
}

}  // namespace

int Part::Edge(int i) const {
  return facts_["rect"].toArray().at(i).toInt();
}

Wanted Named(const char* role, const QString& name) {
  return [role, plain = Plain(name)](const Part& part) {
    return part.Role() == QLatin1String(role) && Plain(part.Name()) == plain;
  };
}

Wanted ObjectNamed(const char* object) {
  return [object](const Part& part) { return part.Text("object") == QLatin1String(object); };
}

Wanted Saying(const QString& text) {
  return [text](const Part& part) { return part.Name().contains(text); };
}

Wanted Cell(int row, int column) {
  return [row, column](const Part& part) { return part.Row() == row && part.Column() == column; };
}

Desktop::Desktop(std::string programFolder)
    : folder_(std::move(programFolder)), socket_(QStringLiteral("/tmp/varnlog-desktop-%1").arg(getpid())) {
  StartServer();
}

Desktop::~Desktop() {
  for (QProcess* process : {&program_, &server_}) {
    process->terminate();
    if (!process->waitForFinished(kPatience)) process->kill();
  }
}

void Desktop::StartServer() {
  // The server chooses a free display and says which: tests that run beside this one have theirs.
  server_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"});
  Require(WaitFor([this] {
            server_.waitForReadyRead(100);
            return server_.canReadLine() || server_.state() == QProcess::NotRunning;
          }) &&
              server_.canReadLine(),
          "Xvfb does not start: " + server_.readAllStandardError().toStdString());
  MakeEnvironment(":" + QString::fromLatin1(server_.readLine()).trimmed());
}

void Desktop::MakeEnvironment(const QString& display) {
  environment_ = QProcessEnvironment::systemEnvironment();
  environment_.insert("DISPLAY", display);
  environment_.insert("QT_QPA_PLATFORM", "xcb");
  environment_.insert("QT_PLUGIN_PATH", VARNLOG_TEST_PLUGINS);
  environment_.insert("QT_QPA_GENERIC_PLUGINS", "screenreader:" + socket_);
  environment_.insert("LC_ALL", "C.UTF-8");
  for (const char* name : {"QT_SCALE_FACTOR", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"}) {
    environment_.remove(QLatin1String(name));
  }
}

void Desktop::Starts(const QStringList& options) {
  ::unlink(socket_.toUtf8().constData());
  program_.setProcessEnvironment(environment_);
  program_.setProcessChannelMode(QProcess::ForwardedChannels);
  program_.start(VARNLOG_PROGRAM_DIR "/varnlog",
                 QStringList{"--folder", QString::fromStdString(folder_)} + options);
  Require(program_.waitForStarted(), "the program cannot be started");
}

int Desktop::Ends() {
  const bool ended = program_.waitForFinished(kPatience) || program_.state() == QProcess::NotRunning;
  Require(ended, "the program does not end; " + Dump(Look()));
  return program_.exitStatus() == QProcess::NormalExit ? program_.exitCode() : -1;
}

int Desktop::StartsAnother() {
  QProcess other;
  QProcessEnvironment environment = environment_;
  environment.remove("QT_QPA_GENERIC_PLUGINS");
  other.setProcessEnvironment(environment);
  other.start(VARNLOG_PROGRAM_DIR "/varnlog", {"--folder", QString::fromStdString(folder_)});
  Require(other.waitForFinished(kPatience), "the other copy does not end");
  return other.exitStatus() == QProcess::NormalExit ? other.exitCode() : -1;
}

Screen Desktop::Look() {
  if (program_.waitForFinished(0) || program_.state() == QProcess::NotRunning) return {};
  QLocalSocket socket;
  socket.connectToServer(socket_, QIODevice::ReadOnly);
  if (!socket.waitForConnected(kPatience)) return {};
  QByteArray answer;
  while (socket.waitForReadyRead(kPatience)) answer += socket.readAll();
  answer += socket.readAll();
  Screen screen;
  for (const QJsonValue& part : QJsonDocument::fromJson(answer).array()) screen.emplace_back(part.toObject());
  return screen;
}

Part Desktop::Sees(const Wanted& wanted, const std::string& what) {
  Part found;
  Screen last;
  const bool seen = WaitFor([&] {
    last = Look();
    for (const Part& part : last) {
      if (!wanted(part) || !part.IsEnabled()) continue;
      found = part;
      return true;
    }
    return false;
  });
  Require(seen, what + " is not seen, but:\n" + Dump(last));
  return found;
}

void Desktop::Clicks(const Part& part) {
  ClicksAt(part.X(), part.Y());
}

void Desktop::ClicksButtonOf(const Part& part) {
  ClicksAt(part.ButtonX(), part.Y());
}

void Desktop::ClicksAt(int x, int y) {
  FocusWindowInUse();
  XDoTool({"mousemove", QString::number(x), QString::number(y), "click", "1"});
}

void Desktop::FocusWindowInUse() {
  Part window;
  Require(WaitFor([&] {
            const Screen screen = Look();
            if (screen.empty()) return false;
            window = screen.front();
            if (!window.IsFocused()) XDoTool({"windowfocus", window.Text("id")});
            return window.IsFocused();
          }),
          "no focus for " + window.Name().toStdString());
}

void Desktop::TakesFocusAway() {
  // The server's own name for whatever window is under the mouse.
  XDoTool({"windowfocus", "1"});
  // The server ignores who asks for the focus with a time before this, and the program takes the time from
  // the last event it has seen.
  XDoTool({"mousemove", "300", "300", "mousemove", "310", "310"});
}

void Desktop::Presses(const char* key) {
  FocusWindowInUse();
  XDoTool({"key", key});
}

void Desktop::Types(const char* text) {
  FocusWindowInUse();
  XDoTool({"type", text});
}

void Desktop::XDoTool(const QStringList& arguments) {
  QProcess tool;
  tool.setProcessEnvironment(environment_);
  tool.start("xdotool", arguments);
  Require(tool.waitForFinished(kPatience) && tool.exitCode() == 0,
          "xdotool: " + tool.readAllStandardError().toStdString());
}

bool Desktop::WaitFor(const std::function<bool()>& done) {
  QElapsedTimer timer;
  timer.start();
  while (!done()) {
    if (timer.hasExpired(kPatience)) return false;
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return true;
}

}  // namespace varnlog::desktop
