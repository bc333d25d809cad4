// Band-averaged cross-spectra of the burst's series, and band spectra of single series.
//
// The packed Hermitian matrix holds co-spectra on and below the diagonal and quad-spectra above it.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Cross-spectral matrix of all series at frequency bin f.
void computeCrossSpectra(WaveVariables &rec, int f);

// Pressure spectrum on the main axis.
void computeBandSpectra(WaveVariables &rec);

// Surface-track spectrum on the fine axis.
void computeBandSpectraFine(WaveVariables &rec);

} // namespace ov
