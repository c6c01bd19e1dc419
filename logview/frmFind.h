#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

#include "core/TextLookup.h"
#include "logview/FindRows.h"

namespace varnlog::logview {

/// The bar above the rows in which something is looked for while it is typed.
class frmFind final : public QWidget {
 public:
  struct Events {
    std::function<void(const FindQuery&)> changed;
    std::function<void()> toRows;  // on to the rows that were found
    std::function<void()> ended;
  };

  frmFind(const core::TextLookup& texts, Events events, QWidget* parent);

  /// Shows the bar, with what was looked for last selected in it.
  void Begin();
  void SetText(const std::string& text);
  [[nodiscard]] FindQuery Query() const;
  /// How many of all rows were found; more may come while that is not `complete`.
  void ShowCount(std::int64_t found, std::int64_t all, bool complete);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  const core::TextLookup& texts_;
  Events events_;
  QLineEdit* txtFind_;
  QCheckBox* chkAccents_;
  QLabel* lblCount_;
};

}  // namespace varnlog::logview
