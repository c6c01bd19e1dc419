#pragma once

#include <cstdint>

#include <QProgressDialog>

#include "core/TextLookup.h"

namespace varnlog::ui {

/// Shows how far a job is that has kept the user waiting for a second, and lets him stop it. It must be gone
/// before a message is shown, or it comes up over that.
class WaitWindow {
 public:
  /// `name` is the object name.
  WaitWindow(QWidget* parent, const core::TextLookup& texts, const char* name);

  /// False stops the job. `label` has the placeholders lngDone and lngCount.
  [[nodiscard]] bool Advance(core::TextKey label, std::int64_t done, std::int64_t all);
  /// The same for jobs of several steps; `part` of all is done, from 0 to 1.
  [[nodiscard]] bool Show(const QString& text, double part);

 private:
  const core::TextLookup& texts_;
  QProgressDialog dialog_;
};

}  // namespace varnlog::ui
