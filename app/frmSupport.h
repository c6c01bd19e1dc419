#pragma once

#include <string>

#include <QDialog>

#include "core/TextLookup.h"

namespace varnlog::app {

/// Shows the support information, so that whoever sends it sees what it says, and copies it.
class frmSupport final : public QDialog {
 public:
  frmSupport(QWidget* parent, const core::TextLookup& texts, const std::string& information);
};

}  // namespace varnlog::app
