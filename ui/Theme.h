#pragma once

#include <QIcon>
#include <QPalette>
#include <QPixmap>
#include <QString>

namespace varnlog::ui {

[[nodiscard]] bool IsDark(const QPalette& palette);

/// The icon of a toolbar key or preview command, such as "PatAll": sharp at any size and scale, and in the
/// colours of the palette at the time it is painted. A null icon when there is none of that name.
[[nodiscard]] QIcon ThemedIcon(const QString& name);

/// The picture beside the text of a message, in the size of the style of `window`.
[[nodiscard]] QPixmap MessagePicture(const QString& name, const QWidget& window);

/// The program's own icon.
[[nodiscard]] QIcon ProgramIcon();

}  // namespace varnlog::ui
