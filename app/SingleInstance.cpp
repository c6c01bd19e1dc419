#include "app/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>

#include "ui/QtText.h"

namespace varnlog::app {

namespace {

// A copy that runs answers at once; this only bounds the wait for one that hangs.
constexpr int kMillisecondsToAnswer = 1000;

bool Reach(const QString& name) {
  QLocalSocket socket;
  socket.connectToServer(name, QIODevice::WriteOnly);
  if (!socket.waitForConnected(kMillisecondsToAnswer)) return false;
  socket.disconnectFromServer();
  return true;
}

}  // namespace

SingleInstance::SingleInstance(const std::string& programFolder) {
  const QString folder = QFileInfo(ui::ToQString(programFolder)).canonicalFilePath();
  const QByteArray owner = (QDir::homePath() + QLatin1Char('|') + folder).toUtf8();
  name_ = QStringLiteral("varnlog-") +
          QString::fromLatin1(QCryptographicHash::hash(owner, QCryptographicHash::Sha256).toHex().left(24));
}

bool SingleInstance::Claim() {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  if (server_.listen(name_)) {
    Hear();
    return true;
  }
  if (Reach(name_)) return false;
  QLocalServer::removeServer(name_);
  if (server_.listen(name_)) Hear();
  return true;
}

void SingleInstance::Hear() {
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (QLocalSocket* other = server_.nextPendingConnection()) {
      QObject::connect(other, &QLocalSocket::disconnected, other, &QObject::deleteLater);
    }
    if (handler_) handler_();
  });
}

void SingleInstance::ActivateOther() const {
  (void)Reach(name_);
}

}  // namespace varnlog::app
