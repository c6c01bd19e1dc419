#pragma once

#include <cstdint>

#include <QElapsedTimer>
#include <QProgressDialog>

#include "core/TextLookup.h"

namespace varnlog::app {

/// Shows how far the first sealing of a log is, once it takes longer than a moment. It cannot be cancelled: a
/// log without seals could only be read.
class TakeOverProgress final : public QProgressDialog {
 public:
  TakeOverProgress(QWidget* parent, const core::TextLookup& texts);
  void Advance(std::int64_t done, std::int64_t all);

 protected:
  void reject() override {}
  void closeEvent(QCloseEvent* event) override;

 private:
  const core::TextLookup& texts_;
  QElapsedTimer sinceBegin_;
  QElapsedTimer sinceEvents_;
};

}  // namespace varnlog::app
