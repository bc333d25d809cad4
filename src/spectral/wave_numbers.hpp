// Wavenumbers of the frequency axis from the dispersion relation with a current.
#pragma once

#include "frame/record.hpp"

namespace ov {

void solveWaveNumbers(WaveVariables &rec);

} // namespace ov
