#pragma once

#include <string>
#include <vector>

#include <QDialog>

#include "core/TextLookup.h"
#include "core/UserDialog.h"

namespace varnlog::intake {

/// Lists what a run has to say about single records, and saves the list as text.
class frmUpdateNotices final : public QDialog {
 public:
  /// `user` hears when the list cannot be saved.
  frmUpdateNotices(QWidget* parent, const core::TextLookup& texts, core::UserDialog& user,
                   const std::vector<std::string>& notices);

 private:
  void SaveAsText();

  const core::TextLookup& texts_;
  core::UserDialog& user_;
  std::string lines_;
};

}  // namespace varnlog::intake
