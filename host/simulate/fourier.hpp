// A series as the sum of its complex lines.
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace orvik {

// x[j] = Re sum over n of lines[n] exp(-2 pi i n j / lines.size()) for j < count. The number of lines must be a power
// of two. Written here rather than taken from an FFT package so that a seed gives the same bytes on every processor.
std::vector<double> sumOfLines(std::vector<std::complex<double>> lines, std::size_t count);

} // namespace orvik
