// Steps of pre-processing that point and profile instruments share.
#pragma once

#include <cstddef>
#include <cstring>

#include "frame/record.hpp"

namespace ov {

// Where a pre-processed element goes, and what the host asked for. Host memory may be misaligned.
struct HostView {
    unsigned char *ast;      // null: not wanted
    unsigned char *pressure; // null: not wanted
    std::size_t stride;      // [bytes] between elements of both
    float windowBelow;
    float windowAbove;
    bool useWindow;
    bool skipAstCleaning;

    void write(int i, float astValue, float pressureValue) const {
        const std::size_t at = static_cast<std::size_t>(i) * stride;
        if (ast != nullptr) {
            std::memcpy(ast + at, &astValue, sizeof astValue);
        }
        if (pressure != nullptr) {
            std::memcpy(pressure + at, &pressureValue, sizeof pressureValue);
        }
    }
};

HostView viewOf(OVPreProcessOutput &output);

bool hasSurfaceTrack(std::int32_t method);

// Samples of the completed burst.
int completedLength(const WaveVariables &rec);

// Smallest pressure of the completed burst, into minPressure.
void findMinPressure(WaveVariables &rec);

// Pressure-only hosts see the despiked pressure and, on instrumentDepth as it stands, its level.
void writePressureRows(const WaveVariables &rec, const HostView &host);

// Cleans the surface track unless the host said not to, and writes it out with the pressure.
void preProcessTrack(WaveVariables &rec, const HostView &host);

} // namespace ov
