#pragma once

#include <vector>

#include "tests/faults/Disk.h"
#include "tests/faults/Sweep.h"

namespace varnlog::faults {

/// The power is cut behind changes of a recorded run; what is found then is judged by the next run. States
/// that look the same are tried once. `cuts` in the order of the run.
void CutPower(Scene& scene, const std::vector<Step>& run, const std::vector<PowerCut>& cuts,
              Disk::Flushing flushing, Findings& findings);

/// Each flush of the folder fails together with the next one, which would make up for it, and the power goes
/// at some time after it.
void CutPowerAfterFailedFlushes(Scene& scene, Findings& findings);

}  // namespace varnlog::faults
