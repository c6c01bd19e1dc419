#include "ui/Toolbar.h"

#include <algorithm>

namespace varnlog::ui {

Toolbar::Toolbar(QWidget* parent) : QToolBar(parent) {
  setMovable(false);
  setFloatable(false);
  setToolButtonStyle(Qt::ToolButtonIconOnly);
  // Whether the toolbar shows is a command of its own, which keeps its check mark.
  setContextMenuPolicy(Qt::PreventContextMenu);
}

void Toolbar::Build(const std::vector<ToolbarItem>& items, bool bigIcons) {
  clear();
  items_ = items;
  const int size = bigIcons ? kBigIcons : kSmallIcons;
  setIconSize({size, size});
  for (const ToolbarItem& item : items_) {
    if (item.command == nullptr) {
      addSeparator()->setObjectName(item.key);
      continue;
    }
    addAction(item.command);
    if (QWidget* button = widgetForAction(item.command)) {
      button->setObjectName(item.key);
      button->setAccessibleName(item.command->toolTip());
    }
  }
}

QAction* Toolbar::Command(const QString& key) const {
  const auto found = std::find_if(items_.begin(), items_.end(), [&key](const ToolbarItem& item) {
    return item.command != nullptr && item.key == key;
  });
  return found == items_.end() ? nullptr : found->command;
}

}  // namespace varnlog::ui
