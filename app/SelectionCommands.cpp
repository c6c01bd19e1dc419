#include "app/SelectionCommands.h"

#include "start/StartUp.h"

namespace varnlog::app {

using core::SelectionKind;

namespace {

bool AskFor(SelectionKind kind, SelectionDialogs& dialogs) {
  switch (kind) {
    case SelectionKind::kAll:
      return true;
    case SelectionKind::kPatient:
      return dialogs.AskPatient();
    case SelectionKind::kPatientPeriod:
      return dialogs.AskPatient() && dialogs.AskPeriod();
    default:
      return dialogs.AskPeriod();
  }
}

}  // namespace

bool ChooseSelection(core::Globals& globals, SelectionKind kind, SelectionDialogs& dialogs) {
  const core::Selection before = globals.CurrentSelection();
  // The period dialog looks at the kind to fill a missing date.
  globals.SortSelectionGl = kind;
  if (AskFor(kind, dialogs)) return true;
  globals.CurrentSelection() = before;
  return false;
}

bool UpdatesOnActivation(const core::Globals& globals, bool logViewLoaded) {
  return globals.UpdateOnActivation && !globals.ReadOnlyGl && !globals.UpdateDeclinedGl && logViewLoaded &&
         !start::IsOtherLog(globals);
}

}  // namespace varnlog::app
