#include "app/SingleInstance.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

#include "platform/Desktop.h"
#include "ui/QtText.h"

namespace varnlog::app {

namespace {

// A copy that runs answers at once; one that is just starting soon will. This bounds the wait for one that
// hangs.
constexpr int kMillisecondsToAnswer = 1000;
constexpr int kMillisecondsBetweenTries = 20;

// Ends what a copy has to say; no path holds it.
constexpr char kEnd = '\0';

// The first copy hangs up as soon as it has everything. What a copy that ends at once has written may be
// lost.
bool Reach(const QString& name, const QByteArray& message) {
  QLocalSocket socket;
  socket.connectToServer(name);
  if (!socket.waitForConnected(kMillisecondsToAnswer)) return false;
  socket.write(message + kEnd);
  if (!socket.waitForBytesWritten(kMillisecondsToAnswer)) return false;
  // One that is busy will hear it later.
  if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(kMillisecondsToAnswer);
  return true;
}

/// Differs from user to user and from folder to folder.
QString NameFor(const std::string& programFolder) {
  const QString folder = QFileInfo(ui::ToQString(programFolder)).canonicalFilePath();
  const QByteArray owner = (QDir::homePath() + QLatin1Char('|') + folder).toUtf8();
  const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return QDir(runtime).filePath(
      QStringLiteral("varnlog-") +
      QString::fromLatin1(QCryptographicHash::hash(owner, QCryptographicHash::Sha256).toHex().left(24)));
}

}  // namespace

SingleInstance::SingleInstance(const std::string& programFolder)
    : name_(NameFor(programFolder)), lock_(name_ + QStringLiteral(".lock")) {
  // However long the program runs; the lock of a copy that crashed is taken over at once.
  lock_.setStaleLockTime(0);
}

bool SingleInstance::Claim() {
  // The server alone would not do: it takes its name from another copy that is listening.
  if (!lock_.tryLock(0) && lock_.error() == QLockFile::LockFailedError && !TakesOwnNumberOver()) return false;
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  QLocalServer::removeServer(name_);
  if (server_.listen(name_)) Hear();
  return true;
}

/// Systems give the numbers of processes again: a lock with our own was left by a copy that did not end in
/// peace. One that somebody holds is not removed.
bool SingleInstance::TakesOwnNumberOver() {
  qint64 process = 0;
  QString computer;
  QString program;
  return lock_.getLockInfo(&process, &computer, &program) && process == QCoreApplication::applicationPid() &&
         lock_.removeStaleLockFile() && lock_.tryLock(0);
}

void SingleInstance::Hear() {
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (QLocalSocket* other = server_.nextPendingConnection()) {
      QObject::connect(other, &QLocalSocket::disconnected, other, &QObject::deleteLater);
      QObject::connect(other, &QLocalSocket::readyRead, other, [this, other] { HearOut(*other); });
      HearOut(*other);
    }
  });
}

void SingleInstance::HearOut(QLocalSocket& other) {
  // No path is longer.
  constexpr qint64 kMost = 64 * 1024;
  const QByteArray said = other.peek(kMost);
  const qsizetype end = said.indexOf(kEnd);
  if (end < 0 && said.size() < kMost) return;
  QObject::disconnect(&other, &QLocalSocket::readyRead, nullptr, nullptr);
  other.disconnectFromServer();
  if (end >= 0 && handler_) handler_(QString::fromUtf8(said.first(end)));
}

bool SingleInstance::ActivateOther(const QString& file) const {
  platform::LetOtherComeToFront();
  const QDeadlineTimer patience(kMillisecondsToAnswer);
  while (!Reach(name_, file.toUtf8())) {
    if (patience.hasExpired()) return false;
    QThread::msleep(kMillisecondsBetweenTries);
  }
  return true;
}

}  // namespace varnlog::app
