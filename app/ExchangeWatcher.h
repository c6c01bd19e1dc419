#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace varnlog::app {

/// Tells when the exchange file changes, comes or goes. Where the file system reports nothing, as shares do
/// when another machine writes, the file is looked at several times a second.
class ExchangeWatcher final : public QObject {
 public:
  /// `changed` is called from the event loop, once for changes that come together.
  explicit ExchangeWatcher(std::function<void()> changed);

  /// "" ends it. Calls back once for a file that is there already.
  void Watch(const std::string& file);

 private:
  struct Stamp {
    std::uintmax_t size = 0;
    std::filesystem::file_time_type time;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  [[nodiscard]] Stamp Look() const;
  void WatchAgain();
  void Reported();
  void Poll();

  std::function<void()> changed_;
  std::filesystem::path file_;
  Stamp seen_;
  QFileSystemWatcher watcher_;
  QTimer tell_;
  QTimer poll_;
};

}  // namespace varnlog::app
