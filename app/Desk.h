#pragma once

#include <functional>
#include <vector>

#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

namespace varnlog::app {

/// What the frame shows while no window in it can be seen: how things stand and what can be done now.
class Desk final : public QWidget {
 public:
  struct Choice {
    QString text;
    QString description;
    QIcon icon;
    std::function<void()> run;
  };

  Desk();
  /// The first choice gets the focus when the desk has it.
  void Offer(const QString& title, std::vector<Choice> choices);

 private:
  QLabel* title_;
  QVBoxLayout* choices_;
};

}  // namespace varnlog::app
