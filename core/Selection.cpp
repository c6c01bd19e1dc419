#include "core/Selection.h"

namespace varnlog::core {

bool Selection::IsComplete() const {
  const bool hasPeriod = dBegGl.IsSet() && dEndGl.IsSet();
  const bool hasPatient = dPatBirthdayGl.IsSet() && !strPatNameGl.empty() && !strPatFirstnameGl.empty();
  return (hasPeriod || !AsksPeriod(SortSelectionGl)) && (hasPatient || !AsksPatient(SortSelectionGl));
}

}  // namespace varnlog::core
