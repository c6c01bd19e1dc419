#pragma once

#include <QLineEdit>
#include <QListWidget>
#include <QPointer>

namespace varnlog::ui {

/// A box that shows below itself which of some texts go on like what was typed. Down and Up put them into the
/// box one after the other, a click puts one in; nothing is put in that was not asked for.
class SuggestingEdit final : public QLineEdit {
  Q_OBJECT
 public:
  /// The likeliest first.
  SuggestingEdit(QStringList suggestions, QWidget* parent);
  ~SuggestingEdit() override;

  /// Those shown now.
  [[nodiscard]] QStringList Shown() const;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void Offer(const QString& typed);
  void Step(int step);

  QStringList suggestions_;
  QPointer<QListWidget> list_;
};

}  // namespace varnlog::ui
