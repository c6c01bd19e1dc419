#include "app/ExchangeWatcher.h"

#include "platform/Files.h"
#include "ui/QtText.h"

namespace varnlog::app {

namespace {

// A write of several pieces is told once.
constexpr int kMillisecondsUntilTold = 10;

// Where the file system reports, looking is only the second string to the bow.
constexpr int kSlow = 2'000;
constexpr int kQuick = 120;

}  // namespace

ExchangeWatcher::ExchangeWatcher(std::function<void()> changed) : changed_(std::move(changed)) {
  tell_.setSingleShot(true);
  tell_.setInterval(kMillisecondsUntilTold);
  connect(&tell_, &QTimer::timeout, this, [this] { changed_(); });
  connect(&poll_, &QTimer::timeout, this, &ExchangeWatcher::Poll);
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &ExchangeWatcher::Reported);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &ExchangeWatcher::Reported);
}

void ExchangeWatcher::Watch(const std::string& file) {
  const auto path = platform::ToPath(file);
  if (path == file_) return;
  if (const QStringList watched = watcher_.files() + watcher_.directories(); !watched.isEmpty())
    watcher_.removePaths(watched);
  file_ = path;
  seen_ = Look();
  poll_.stop();
  if (file_.empty()) return;
  WatchAgain();
  poll_.start(kSlow);
  tell_.start();
}

ExchangeWatcher::Stamp ExchangeWatcher::Look() const {
  std::error_code error;
  Stamp stamp;
  stamp.size = platform::FileSize(file_).value_or(0);
  if (stamp.size > 0) stamp.time = std::filesystem::last_write_time(file_, error);
  return stamp;
}

/// A file that was removed is watched again when there is one of its name; the folder tells that.
void ExchangeWatcher::WatchAgain() {
  const QString folder = ui::ToQString(platform::FromPath(file_.parent_path()));
  const QString file = ui::ToQString(platform::FromPath(file_));
  std::error_code error;
  if (!watcher_.directories().contains(folder) && std::filesystem::is_directory(file_.parent_path(), error))
    watcher_.addPath(folder);
  if (!watcher_.files().contains(file) && std::filesystem::exists(file_, error)) watcher_.addPath(file);
}

void ExchangeWatcher::Reported() {
  WatchAgain();
  const Stamp now = Look();
  if (now == seen_) return;
  seen_ = now;
  poll_.setInterval(kSlow);
  tell_.start();
}

void ExchangeWatcher::Poll() {
  WatchAgain();
  const Stamp now = Look();
  if (now == seen_) return;
  seen_ = now;
  poll_.setInterval(kQuick);
  tell_.start();
}

}  // namespace varnlog::app
