#pragma once

#include <functional>
#include <string>

#include <QLocalServer>
#include <QLockFile>

namespace varnlog::app {

/// Lets one copy of the program run for each user and program folder.
class SingleInstance {
 public:
  explicit SingleInstance(const std::string& programFolder);

  /// True when this is the first copy; it then hears of later ones. What a crashed copy left behind is taken
  /// over.
  [[nodiscard]] bool Claim();

  /// Asks the running copy to come to the front.
  void ActivateOther() const;

  /// Called in the first copy when another one was started.
  void OnActivation(std::function<void()> handler) { handler_ = std::move(handler); }

 private:
  void Hear();

  QString name_;
  QLockFile lock_;
  QLocalServer server_;
  std::function<void()> handler_;
};

}  // namespace varnlog::app
