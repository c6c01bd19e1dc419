#pragma once

#include <filesystem>

#include <QImage>
#include <QString>
#include <QWidget>

namespace varnlog::tools {

/// Pictures of windows in a folder. A simple frame with the window's title is drawn around each, because the
/// offscreen platform has no window manager.
class Album {
 public:
  explicit Album(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// The window as it stands, with the menus and lists that are open above it. Throws std::runtime_error when
  /// the file cannot be written.
  void Add(const QString& name, QWidget& window) const;

 private:
  std::filesystem::path folder_;
};

}  // namespace varnlog::tools
