#pragma once

#include <optional>

#include <QComboBox>
#include <QValidator>

namespace varnlog::ui {

/// Cuts an entry to a number of characters, not of UTF-16 units, by dropping what was just put in; line
/// breaks and tabs become blanks.
class LengthLimit final : public QValidator {
  Q_OBJECT
 public:
  LengthLimit(std::optional<int> characters, QObject* parent);
  State validate(QString& input, int& position) const override;

 private:
  std::optional<int> characters_;
};

/// The editor of a column with a list: one of its entries, or none when the stored text is not among them.
class ListEditor final : public QComboBox {
  Q_OBJECT
 public:
  explicit ListEditor(QWidget* parent);

  void showPopup() override;
  void hidePopup() override;

 signals:
  /// An entry was taken from the open list.
  void Chosen();
  /// The list was closed without a choice.
  void Dismissed();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  enum class List { kNeverOpened, kOpen, kClosing, kDone };
  List list_ = List::kNeverOpened;
};

}  // namespace varnlog::ui
