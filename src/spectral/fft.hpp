// The library's one transform: a whole burst series to packed, scaled Fourier coefficients.
//
// Packing of n samples into two halves of h = n/2 values, scaled by 2/n so that the modulus of a pair is the amplitude
// of the cosine at that frequency:
//
//     first half:  [0] mean, [1] Nyquist term, [j] real part of harmonic j - 1 (j = 2 .. h - 1)
//     second half: [0] 0,    [1] 0,            [j] imaginary part of harmonic j - 1
//
// Harmonic h - 1 is not kept; every reader of the spectra relies on these places.
#pragma once

#include "frame/record.hpp"

namespace ov {

// In-place radix-2 transform of nn complex values, X[k] = sum x[t] exp(isign 2 pi i k t / nn), not normalised.
// data[0] is the real part of value 0. nn is a power of two.
void complexFft(float *data, int nn, int isign);

// Transforms n samples in place into the packing above (both halves behind each other). The samples are lost.
void realSeriesFft(WaveVariables &rec, float *series, int n);

// Transforms the n samples that loadSample() placed and writes the two halves to `re` and `im`.
void transformLoaded(WaveVariables &rec, int n, float *re, float *im);

// Places sample i of a series for transformLoaded(): a series is transformed without a copy of its own, and stays.
inline void loadSample(WaveVariables &rec, int i, float value) {
    rec.fftWork[2 * i] = value;
    rec.fftWork[2 * i + 1] = 0.0F;
}

} // namespace ov
