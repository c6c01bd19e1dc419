#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

namespace varnlog::desktop {

/// What is seen of one thing on the screen.
class Part {
 public:
  explicit Part(QJsonObject facts = {}) : facts_(std::move(facts)) {}

  [[nodiscard]] QString Text(const char* fact) const { return facts_[QLatin1String(fact)].toString(); }
  [[nodiscard]] QString Role() const { return Text("role"); }
  [[nodiscard]] QString Name() const { return Text("name"); }
  [[nodiscard]] bool IsEnabled() const { return facts_["enabled"].toBool(true); }
  [[nodiscard]] bool IsFocused() const { return facts_["focused"].toBool(); }
  /// -1 but for the cells of a table.
  [[nodiscard]] int Row() const { return facts_["row"].toInt(-1); }
  [[nodiscard]] int Column() const { return facts_["column"].toInt(-1); }
  /// On the screen, where a click hits it.
  [[nodiscard]] int X() const { return Edge(0) + Edge(2) / 2; }
  [[nodiscard]] int Y() const { return Edge(1) + Edge(3) / 2; }
  /// In the middle of a square at the right end.
  [[nodiscard]] int ButtonX() const { return Edge(0) + Edge(2) - Edge(3) / 2; }
  [[nodiscard]] const QJsonObject& Facts() const { return facts_; }

 private:
  [[nodiscard]] int Edge(int i) const;

  QJsonObject facts_;
};

using Screen = std::vector<Part>;
using Wanted = std::function<bool(const Part&)>;

/// A part with that role and name; accelerator marks and shortcuts do not count.
[[nodiscard]] Wanted Named(const char* role, const QString& name);
[[nodiscard]] Wanted ObjectNamed(const char* object);
/// A part whose name contains the text.
[[nodiscard]] Wanted Saying(const QString& text);
[[nodiscard]] Wanted Cell(int row, int column);

/// An X server of its own, without a window manager, and the program on it. Mouse and keys go through the
/// server as a person's do. What waits, waits for something to be seen and throws after a minute, telling
/// what was seen instead.
class Desktop {
 public:
  explicit Desktop(std::string programFolder);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// `options` besides the folder.
  void Starts(const QStringList& options = {});
  /// The exit status of the program, which must end by itself.
  [[nodiscard]] int Ends();
  /// The exit status of another copy started on the same folder.
  [[nodiscard]] int StartsAnother();

  [[nodiscard]] Screen Look();
  Part Sees(const Wanted& wanted, const std::string& what);
  void Clicks(const Part& part);
  /// The drop-down button at the right end of a cell.
  void ClicksButtonOf(const Part& part);
  /// Waits until a part is there and can be used, and clicks it.
  void ClicksOn(const Wanted& wanted, const std::string& what) { Clicks(Sees(wanted, what)); }
  /// A key as xdotool names it: "Return", "ctrl+p".
  void Presses(const char* key);
  /// ASCII only.
  void Types(const char* text);
  /// The keys go to no window of the program any more.
  void TakesFocusAway();
  /// True when `done` within the time that everything here waits for.
  static bool WaitFor(const std::function<bool()>& done);

 private:
  void StartServer();
  void MakeEnvironment(const QString& display);
  /// What a window manager would do: the keys go to the window in use.
  void FocusWindowInUse();
  void ClicksAt(int x, int y);
  void XDoTool(const QStringList& arguments);

  std::string folder_;
  QProcessEnvironment environment_;
  QString socket_;
  QProcess server_;
  QProcess program_;
};

}  // namespace varnlog::desktop
