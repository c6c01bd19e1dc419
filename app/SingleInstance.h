#pragma once

#include <functional>
#include <string>

#include <QLocalServer>
#include <QLockFile>

class QLocalSocket;

namespace varnlog::app {

/// Lets one copy of the program run for each user and program folder. What it keeps for that lies in the
/// user's runtime folder, where nobody else can put anything in its way.
class SingleInstance {
 public:
  explicit SingleInstance(const std::string& programFolder);

  /// True when this is the first copy; it then hears of later ones. What a crashed copy left behind is taken
  /// over.
  [[nodiscard]] bool Claim();

  /// Asks the running copy to come to the front and, unless it is "", to open that file; false when there is
  /// nobody who answers.
  [[nodiscard]] bool ActivateOther(const QString& file) const;

  /// Where the copy that runs is noted.
  [[nodiscard]] QString LockFile() const { return lock_.fileName(); }

  /// Called in the first copy when another one was started, with the file that is to be opened or "".
  void OnActivation(std::function<void(const QString& file)> handler) { handler_ = std::move(handler); }

 private:
  [[nodiscard]] bool TakesOwnNumberOver();
  void Hear();
  void HearOut(QLocalSocket& other);

  QString name_;  // the whole path
  QLockFile lock_;
  QLocalServer server_;
  std::function<void(const QString& file)> handler_;
};

}  // namespace varnlog::app
