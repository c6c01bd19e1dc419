#pragma once

#include <QDialog>

#include "core/TextLookup.h"

namespace varnlog::intake {

/// Warns that the log is not up to date yet. Accepted means that the run goes on, rejected that it stops.
class frmCancelUpdate final : public QDialog {
 public:
  frmCancelUpdate(QWidget* parent, const core::TextLookup& texts);
};

}  // namespace varnlog::intake
