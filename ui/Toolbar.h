#pragma once

#include <vector>

#include <QAction>
#include <QString>
#include <QToolBar>

namespace varnlog::ui {

/// One button: its key and the command behind it, whose tooltip it shows. Without a command: a separator.
struct ToolbarItem {
  QString key;
  QAction* command = nullptr;
};

/// A flat toolbar of pictures without captions.
class Toolbar final : public QToolBar {
  Q_OBJECT
 public:
  static constexpr int kSmallIcons = 16;
  static constexpr int kBigIcons = 32;

  explicit Toolbar(QWidget* parent = nullptr);

  /// Replaces all buttons. The commands stay their owner's.
  void Build(const std::vector<ToolbarItem>& items, bool bigIcons);

  /// nullptr when there is no button of that key; letter case counts.
  [[nodiscard]] QAction* Command(const QString& key) const;

 private:
  std::vector<ToolbarItem> items_;
};

}  // namespace varnlog::ui
