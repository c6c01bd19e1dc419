#pragma once

#include "core/Globals.h"

namespace varnlog::app {

/// The two selection dialogs; each returns false when it was left with Cancel.
class SelectionDialogs {
 public:
  virtual ~SelectionDialogs() = default;
  virtual bool AskPeriod() = 0;
  virtual bool AskPatient() = 0;
};

/// Makes `kind` the current selection, asking what it needs. False when a dialog was cancelled; then the
/// selection, and for kPatientPeriod the patient too, are those of before.
[[nodiscard]] bool ChooseSelection(core::Globals& globals, core::SelectionKind kind,
                                   SelectionDialogs& dialogs);

/// Whether activating the program starts an update without asking.
[[nodiscard]] bool UpdatesOnActivation(const core::Globals& globals, bool logViewLoaded);

}  // namespace varnlog::app
