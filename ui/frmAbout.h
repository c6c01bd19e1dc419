#pragma once

#include <string>
#include <vector>

#include <QDialog>

#include "core/TextLookup.h"

namespace varnlog::ui {

/// A library that is part of the program.
struct UsedLibrary {
  std::string name;
  std::string version;
  std::string licence;
};

/// The version of Qt that is running and its licence.
[[nodiscard]] UsedLibrary QtLibrary();

/// The about box: the program, its version, and the libraries in it with their licences.
class frmAbout final : public QDialog {
  Q_OBJECT
 public:
  frmAbout(const core::TextLookup& texts, const std::string& version,
           const std::vector<UsedLibrary>& libraries, QWidget* parent = nullptr);
};

}  // namespace varnlog::ui
