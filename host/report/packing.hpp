// Arrays as text in a page: numbers of few digits, deflated, in base 64.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvik {

// Single-precision values, every bit of them.
std::string packFloats(const std::vector<double> &values);

// Values rounded to a number of significant digits, so that what a page shows is what the file holds:
//
//     value = m 10^(e - digits + 1),  10^(digits - 1) <= m < 10^digits,  lowest <= e
//     code  = 2 + (e - lowest) (10^digits - 10^(digits - 1)) + m - 10^(digits - 1)
//
// 0 stands for a missing value and 1 for one that is smaller than 10^lowest, zero included.
std::vector<std::uint16_t> decimalCodes(const std::vector<double> &values, int digits, int lowest);

// Steps of `step`, rounded to the nearest, from 1; 0 stands for a missing value.
std::vector<std::uint16_t> stepCodes(const std::vector<double> &values, double step);

// High bytes first, then low ones: alike bytes side by side deflate better.
std::string packCodes(const std::vector<std::uint16_t> &codes);

// The power of ten of the greatest value; 0 when there is none.
int greatestExponent(const std::vector<double> &values);

} // namespace orvik
