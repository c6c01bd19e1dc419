#include <QAccessible>
#include <QApplication>
#include <QGenericPlugin>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMetaEnum>
#include <QWidget>
#include <QWindow>

// Loaded into the program by a test, tells the test what a screen reader would be told: nothing of it acts on
// the program.

namespace varnlog::desktop {

namespace {

QJsonObject Described(QAccessibleInterface& part) {
  const QRect rect = part.rect();
  const QAccessible::State state = part.state();
  QJsonObject object{
      {"role", QMetaEnum::fromType<QAccessible::Role>().valueToKey(part.role())},
      {"name", part.text(QAccessible::Name)},
      {"value", part.text(QAccessible::Value)},
      {"description", part.text(QAccessible::Description)},
      {"enabled", !state.disabled},
      {"focused", bool(state.focused)},
      {"rect", QJsonArray{rect.x(), rect.y(), rect.width(), rect.height()}},
  };
  if (part.object() != nullptr) object["object"] = part.object()->objectName();
  if (auto* cell = part.tableCellInterface(); cell != nullptr && part.object() == nullptr) {
    object["row"] = cell->rowIndex();
    object["column"] = cell->columnIndex();
  }
  return object;
}

void Collect(QAccessibleInterface* part, QJsonArray& parts) {
  if (part == nullptr || !part->isValid() || part->state().invisible) return;
  parts.append(Described(*part));
  for (int i = 0; i < part->childCount(); ++i) Collect(part->child(i), parts);
}

/// The window that takes mouse and keys: while a menu or a modal window is open, no other does.
QWidget* WindowInUse() {
  for (QWidget* window : {QApplication::activePopupWidget(), QApplication::activeModalWidget()}) {
    if (window != nullptr) return window;
  }
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->parentWidget() == nullptr) return window;
  }
  return nullptr;
}

/// The parts of the window in use, once the X server has shown it; the window itself comes first.
QJsonDocument Screen() {
  QJsonArray parts;
  QWidget* window = WindowInUse();
  if (window == nullptr || !window->windowHandle()->isExposed()) return {};
  parts.append(QJsonObject{{"role", "TopWindow"},
                           {"name", window->windowTitle()},
                           {"id", QString::number(window->winId())},
                           {"focused", window->isActiveWindow()}});
  Collect(QAccessible::queryAccessibleInterface(window), parts);
  // A cell's editor is no part of the table.
  if (QWidget* focus = QApplication::focusWidget()) {
    QJsonObject object = Described(*QAccessible::queryAccessibleInterface(focus));
    object["role"] = "Focus";
    object["class"] = focus->metaObject()->className();
    parts.append(object);
  }
  return QJsonDocument(parts);
}

class ScreenReader final : public QObject {
 public:
  explicit ScreenReader(const QString& socket) {
    connect(&server_, &QLocalServer::newConnection, this, [this] {
      QLocalSocket* test = server_.nextPendingConnection();
      connect(test, &QLocalSocket::disconnected, test, &QObject::deleteLater);
      test->write(Screen().toJson(QJsonDocument::Compact));
      test->disconnectFromServer();
    });
    server_.listen(socket);
  }

 private:
  QLocalServer server_;
};

}  // namespace

class ScreenReaderPlugin final : public QGenericPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "screenreader.json")

 public:
  QObject* create(const QString& /*name*/, const QString& socket) override {
    return new ScreenReader(socket);
  }
};

}  // namespace varnlog::desktop

#include "ScreenReader.moc"
