#pragma once

#include <QDialog>

#include "db/TextLookup.h"

namespace varnlog::intake {

/// Warns that the log is not up to date yet. Accepted means that the run goes on, rejected that it stops.
class frmCancelUpdate final : public QDialog {
 public:
  frmCancelUpdate(QWidget* parent, const db::TextLookup& texts);
};

}  // namespace varnlog::intake
